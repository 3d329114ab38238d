#include "System/File/fileMem.h"
#include "System/File/textTokenizer.h"

#include <cstdio>
#include <cstring>

// Reads lines like `lamp "hall" { range 12.5 }`. Returns the sum of all ranges.
float readLamps(Qel::cFile &file)
{
    Qel::TextTokenizer tokens(file);
    tokens.skipComment_oneLine(true);
    tokens.skipComment_block(true);

    float sum = 0.0f;
    for (;;) {
        Qel::TextToken const keyword = tokens.getNextToken();
        if (keyword.isEnd()) { // not: if it is a TOK_END, which an odd character is as well
            return sum;
        }
        if (!keyword.isExactText("lamp")) {
            std::printf("line %u: %s?\n", tokens.getLine() + 1, keyword.getExactText().c_str());
            tokens.readUntilToken(Qel::TOK_RBRACE);
            continue;
        }
        std::printf("lamp %s\n", tokens.getNextToken().convertToString().c_str());
        tokens.readUntilToken(Qel::TOK_LBRACE);
        if (tokens.getNextToken().isExactText("range")) {
            sum += tokens.getNextToken().convertToFloat32();
        }
        tokens.readUntilToken(Qel::TOK_RBRACE);
    }
}

int main()
{
    char const text[] = "// the hall\n"
                        "lamp \"hall\" { range 12.5 }\n"
                        "door { open }\n"
                        "lamp \"stairs\" { range .5 } // the last\n";
    Qel::cFileMem file; // scripts are read fastest from memory
    file.write(text, static_cast<unsigned int>(std::strlen(text)));
    file.seek(0);
    return readLamps(file) == 13.0f ? 0 : 1;
}
