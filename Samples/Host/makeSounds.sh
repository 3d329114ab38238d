#!/usr/bin/env bash
# Makes the sounds of the host's scene anew, into media/scene. Needs sox, espeak-ng and oggenc (vorbis-tools),
# which the build does not: the results are in the tree.
set -euo pipefail
cd "$(dirname "$0")/media"
mkdir -p scene
made=$(mktemp -d)
trap 'rm -rf "$made"' EXIT

# rate channels file effect...; the same noise each time, without dither
sound() { sox -R -D -r "$1" -c "$2" -n -b 16 "${@:3}"; }

# Music: four chords of organ pipes, twelve seconds that meet their own beginning.
chords=("A2 E3 A3 C4" "F2 C3 F3 A3" "C3 G3 C4 E4" "G2 D3 G3 B3")
for number in 0 1 2 3; do
    pipes=()
    for note in ${chords[$number]}; do
        pipes+=(triangle "$note")
    done
    sound 32000 4 "$made/chord$number.wav" synth 3 "${pipes[@]}" remix 1,3 2,4 lowpass 1500 \
        gain -n -9 fade h 0.02 3 0.02
done
sox "$made"/chord[0-3].wav "$made/music.wav"
oggenc -Q -q 1 -s 1 "$made/music.wav" -o scene/music.ogg

# A voice.
espeak-ng -v en -s 150 -w "$made/said.wav" "Attention please. The ferry to the island leaves in five minutes from pier two."
sox -D "$made/said.wav" -r 22050 -c 1 "$made/speech.wav" gain -n -3
oggenc -Q -q 1 -s 2 "$made/speech.wav" -o scene/speech.ogg

# A bee: a stream that loops without a seam, whole periods of its tone.
sound 22050 1 "$made/bee.wav" synth 2 sawtooth 220 synth 2 sine amod 8 gain -n -8 lowpass 2500
oggenc -Q -q 2 -s 3 "$made/bee.wav" -o scene/bee.ogg

# Short effects.
sound 22050 1 scene/step.wav synth 0.12 noise lowpass 700 fade q 0.002 0.12 0.1 gain -n -6
sound 22050 1 scene/drop.wav synth 0.15 sine 1800-600 fade q 0.002 0.15 0.12 gain -n -8
sound 22050 3 scene/bell.wav synth 0.9 sine 880 sine 2217 sine 3520 remix - fade q 0.002 0.9 0.85 gain -n -6
sound 22050 1 scene/hammer.wav synth 0.2 square 180 tremolo 60 90 fade q 0.001 0.2 0.18 gain -n -9

# The two sides of a waterfall.
sound 16000 1 scene/fallLeft.wav synth 1.5 pinknoise lowpass 3000 gain -n -6
sound 16000 1 scene/fallRight.wav synth 1.5 brownnoise highpass 60 gain -n -6

# Horns on the six speakers, one after the other.
for speaker in 0 1 2 3 4 5; do
    sound 8000 1 "$made/horn$speaker.wav" synth 0.2 triangle $((200 + 60 * speaker)) \
        fade q 0.01 0.2 0.05 gain -n -6 pad "$(awk "BEGIN {print 0.2 * $speaker}")"
done
sox -M "$made"/horn[0-5].wav -t wavpcm scene/horns.wav
