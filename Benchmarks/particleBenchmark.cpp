#include "Benchmarks/allocationCounter.h"

#include "Tests/Tools/testParticles.h"

#include "System/File/fileSystem.h"
#include "System/math/rand.h"

#include <benchmark/benchmark.h>

#include <emmintrin.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

// A step of a system against a pass written by hand over the same records, against a plain reading in three
// passes, and against copying the records; births, scripts, binary templates and copies.

namespace {

using namespace Qel;

constexpr float dt = 1e-6f;

void fill(Particle &particle)
{
    particle = Particle();
    particle.position = {cRand::random(-9.0f, 9.0f), cRand::random(-9.0f, 9.0f), cRand::random(-9.0f, 9.0f)};
    particle.direction = {cRand::random(-1.0f, 1.0f), cRand::random(-1.0f, 1.0f), cRand::random(-1.0f, 1.0f)};
    particle.timeToLive = particle.totalTimeToLive = 1e6f;
}

std::vector<Particle> filled(benchmark::State const &state)
{
    std::vector<Particle> all(static_cast<std::size_t>(state.range(0)));
    for (Particle &particle : all) {
        fill(particle);
    }
    return all;
}

void count(benchmark::State &state)
{
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// What an affector of no work costs is the library's own.
class Idle final : public test::NoteAffector {
public:
    using NoteAffector::NoteAffector;
    void _affect(ParticleSystem *, float) override {}
};

class IdleFactory final : public ParticleAffectorFactory {
public:
    char const *getType() const override { return "Idle"; }
    ParticleAffector *createAffector() override { return std::make_unique<Idle>(this).release(); }
    ParticleAffector *createAffector(cFile &) override { return createAffector(); }
};

void step(benchmark::State &state, bool hasAffector)
{
    IdleFactory idle;
    test::Particles particles;
    particles.manager.addAffectorFactory(&idle);
    ParticleSystem system;
    system.setParticleQuota(static_cast<unsigned>(state.range(0)) + 1);
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        fill(*system.addParticle());
    }
    if (hasAffector) {
        system.addAffector("Idle");
    }
    AllocationCounter const counter;
    for (auto _ : state) {
        system.update(dt);
        benchmark::DoNotOptimize(system.getBoundingBox().min);
    }
    state.counters["allocations"] = static_cast<double>(counter.count());
    count(state);
}

void unbroken(benchmark::State &state)
{
    step(state, false);
}
void withAffector(benchmark::State &state)
{
    step(state, true);
}

void byHand(benchmark::State &state)
{
    std::vector<Particle> all = filled(state);
    Particle *const pool = all.data();
    std::size_t const size = all.size();
    std::vector<unsigned> places(all.size());
    unsigned *const expired = places.data();
    std::size_t expiredCount = 0;
    __m128 const inDirection = _mm_castsi128_ps(_mm_setr_epi32(-1, -1, -1, 0));
    __m128 const aging = _mm_setr_ps(0, 0, 0, dt);
    __m128 const step = _mm_setr_ps(dt, dt, dt, 0);
    auto const move = [&, pool](std::size_t i) {
        float *const rows = &pool[i].position.x;
        __m128 place = _mm_loadu_ps(rows);
        __m128 const motion = _mm_sub_ps(_mm_loadu_ps(rows + 4), aging);
        _mm_storeu_ps(rows + 4, motion);
        if ((_mm_movemask_ps(motion) & 8) != 0) {
            place = _mm_and_ps(place, inDirection);
            expired[expiredCount++] = static_cast<unsigned>(i);
        }
        place = _mm_add_ps(place, _mm_mul_ps(motion, step));
        _mm_storeu_ps(rows, place);
        if ((pool[i].flags & Particle::ANIMATED) != 0) {
            pool[i].currentFrame = 1;
        }
        return place;
    };
    for (auto _ : state) {
        __m128 least = _mm_set1_ps(1e30f);
        __m128 most = _mm_set1_ps(-1e30f);
        __m128 least2 = least;
        __m128 most2 = most;
        for (std::size_t i = 0; i + 1 < size; i += 2) {
            __m128 const first = move(i);
            __m128 const second = move(i + 1);
            least = _mm_min_ps(first, least);
            most = _mm_max_ps(first, most);
            least2 = _mm_min_ps(second, least2);
            most2 = _mm_max_ps(second, most2);
        }
        benchmark::DoNotOptimize(_mm_min_ps(least, least2));
        benchmark::DoNotOptimize(_mm_max_ps(most, most2));
    }
    count(state);
}

void threePasses(benchmark::State &state)
{
    std::vector<Particle> all = filled(state);
    std::vector<unsigned> expired;
    for (auto _ : state) {
        for (std::size_t i = 0; i < all.size(); ++i) {
            all[i].timeToLive -= dt;
            if (all[i].timeToLive < 0) {
                all[i].size = 0;
                expired.push_back(static_cast<unsigned>(i));
            }
        }
        benchmark::ClobberMemory();
        for (Particle &particle : all) {
            particle.position += particle.direction * dt;
            if ((particle.flags & Particle::ANIMATED) != 0) {
                particle.currentFrame = 1;
            }
        }
        benchmark::ClobberMemory();
        D3DXVECTOR3 least = all[0].position;
        D3DXVECTOR3 most = least;
        float margin = 0;
        for (Particle const &particle : all) {
            D3DXVECTOR3 const &at = particle.position;
            least = {std::min(least.x, at.x), std::min(least.y, at.y), std::min(least.z, at.z)};
            most = {std::max(most.x, at.x), std::max(most.y, at.y), std::max(most.z, at.z)};
            margin = std::max(margin, particle.size);
        }
        benchmark::DoNotOptimize(least);
        benchmark::DoNotOptimize(most);
        benchmark::DoNotOptimize(margin);
    }
    count(state);
}

void copyRecords(benchmark::State &state)
{
    std::vector<Particle> const all = filled(state);
    std::vector<Particle> other = all;
    for (auto _ : state) {
        std::copy(all.begin(), all.end(), other.begin());
        benchmark::ClobberMemory();
    }
    count(state);
}

#define FOR_SIZES(function) BENCHMARK(function)->Arg(1000)->Arg(2000)->Arg(10000)->Arg(100000)->Arg(1000000)
FOR_SIZES(unbroken);
FOR_SIZES(byHand);
FOR_SIZES(withAffector);
FOR_SIZES(threePasses);
FOR_SIZES(copyRecords);

// 100 000 particles a second in steps of 1/60, living for a second.
void births(benchmark::State &state)
{
    test::Particles particles;
    ParticleSystem system;
    system.setParticleQuota(120000);
    ParticleEmitter &emitter = *system.addEmitter("Dot");
    emitter.setEmissionRate(100000);
    emitter.setTimeToLive(0.9f, 1.1f);
    emitter.setParticleVelocity(1, 2);
    emitter.setEmissionAngle(30);
    for (auto _ : state) {
        system.update(1 / 60.0f);
        test::particleTrace().clear();
    }
    state.counters["frames/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(births);

/// A manager with a script of many templates, as text and as a binary file.
struct Library {
    Library()
    {
        ParticleSystem one("x", "x");
        one.addEmitter("Dot");
        one.addEmitter("Dot");
        one.addAffector("Note");
        for (int i = 0; i < 500; ++i) {
            String name;
            name.sprintf("Template %d", i);
            one.setTemplateName(name);
            particles.manager.addTemplate(name, one);
        }
        particles.manager.saveScript(script);
        particles.manager.SerializeTemplates(binary);
    }
    ~Library()
    {
        std::remove(script);
        std::remove(binary);
    }

    test::Particles particles;
    char const *script = "particleBenchmark.particle";
    char const *binary = "particleBenchmark.bin";
};

std::int64_t sizeOf(char const *path)
{
    std::ifstream file(path, std::ios::ate | std::ios::binary);
    return file.tellg();
}

void readScript(benchmark::State &state)
{
    Library library;
    for (auto _ : state) {
        library.particles.manager.parseScript(library.script);
    }
    state.SetBytesProcessed(state.iterations() * sizeOf(library.script));
    state.SetItemsProcessed(state.iterations() * 500);
}
BENCHMARK(readScript);

void readBinary(benchmark::State &state)
{
    Library library;
    for (auto _ : state) {
        library.particles.manager.DeserializeTemplates(library.binary);
    }
    state.SetBytesProcessed(state.iterations() * sizeOf(library.binary));
    state.SetItemsProcessed(state.iterations() * 500);
}
BENCHMARK(readBinary);

void copyTemplate(benchmark::State &state)
{
    Library library;
    for (auto _ : state) {
        library.particles.manager.destroySystem(library.particles.manager.createSystem("one", "Template 77"));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(copyTemplate);

} // namespace
