#include "System/File/fileMem.h"
#include "System/File/textTokenizer.h"
#include "Tests/Fuzz/fuzzTarget.h"
#include "Tests/Tools/vectorFile.h"

namespace {

using Qel::TextTokenizer;

// One of the operations, now and then another than taking a token. What it saw, and where all stand then.
std::string step(TextTokenizer &tokens, Qel::cFile &file, unsigned choice)
{
    Qel::TextToken token = tokens.peekAtNextToken();
    switch (choice) {
    case 1:
        tokens.readUntilNextWhitespace();
        break;
    case 2:
        tokens.readUntilEol();
        break;
    case 3:
        tokens.readUntilToken(token);
        break;
    case 4:
        tokens.readUntilToken(Qel::TextToken(Qel::TOK_LBRACE));
        break;
    case 5:
        tokens.readUntilEnd();
        break;
    default:
        token = tokens.getNextToken();
    }
    std::string seen = std::to_string(token.getType()) + ':' + std::to_string(token.convertToInt32()) + ',' +
                       std::to_string(token.convertHexToInt32()) + ',';
    float const real = token.convertToFloat32();
    seen.append(reinterpret_cast<char const *>(&real), sizeof real);
    seen.append(token.convertToString()).append(1, '|');
    seen += std::to_string(tokens.getLine()) + (tokens.nextTokenPreceededByWhitespace() ? 'p' : '-') +
            (tokens.nextTokenIsFollowedByWhitespace() ? 'f' : '-') + (tokens.nextTokenIsLast() ? 'l' : '-') +
            std::to_string(file.tell());
    return seen;
}

} // namespace

// The first byte sets the comments and the blocks in which one stream reads, the second picks operations, the
// rest is the text. A stream in memory and any other have to look the same after every step.
std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    if (size < 2) {
        return {};
    }
    Qel::cFileMem memory(static_cast<unsigned int>(size - 2), data + 2);
    test::VectorFile other(std::string(reinterpret_cast<char const *>(data) + 2, size - 2));
    other.maxRead = 1 + data[0] / 4;
    TextTokenizer inMemory(memory);
    TextTokenizer inOther(other);
    for (TextTokenizer *const tokens : {&inMemory, &inOther}) {
        tokens->skipComment_oneLine((data[0] & 1) != 0);
        tokens->skipComment_block((data[0] & 2) != 0);
    }
    std::string seen;
    std::size_t steps = 0;
    for (; !inMemory.peekAtNextToken().isEnd(); ++steps) {
        fuzzRequire(steps <= size, "each step takes something");
        unsigned const choice = steps % 8 == data[1] % 8u ? data[1] / 8 % 6 : 0;
        std::string const now = step(inMemory, memory, choice);
        // These may leave all as it was.
        if (choice == 1 || choice == 5) {
            inMemory.getNextToken();
        }
        std::string const there = step(inOther, other, choice);
        if (choice == 1 || choice == 5) {
            inOther.getNextToken();
        }
        fuzzRequire(now == there, "a stream in memory is read as any other");
        seen += now;
    }
    fuzzRequire(inOther.peekAtNextToken().isEnd() && memory.eof() && other.eof(), "both end together");
    return seen;
}
