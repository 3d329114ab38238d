#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include <sys/wait.h>
#include <tuple>

namespace {

/// Runs the program in the working folder. What it says is in "said".
int run(std::string const &arguments)
{
    int const status = std::system((QELLINT " " + arguments + " >said 2>&1").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Qellint, SaysLineAndMistake)
{
    test::TempFolder const folder;
    std::tuple<char const *, char const *> const rows[] = {
        {"version 1\n// { \"\nparticlesystem \"A\" { \"quota 3\" emitter Point { \"size 1\" \"material\" } }",
         ""},
        {"\nparticlesytem A { }\n", "s:2: unknown keyword 'particlesytem'\ns:2: unknown keyword 'A'\n"
                                    "s:2: unknown keyword '{'\ns:2: unknown keyword '}'\n"},
        {"particlesystem A {\n\"quota 3\"\nquota\n\"quta 3\" }",
         "s:3: 'quota' stands outside quotes\ns:4: unknown parameter 'quta' of template 'A'\n"},
        {"particlesystem A {\nemitter Pont { \"x 1\" }\n}", "s:2: unknown type of emitter 'Pont'\n"},
        {"particlesystem A { /* \n\n */ emitter Point {\n\"size x\"\n\"size\"\n\"size -1\"\n\"direction 0 "
         "1\" }\n}",
         "s:4: 'size' is 'x' and not a number\ns:5: '\"size\"' has no value\n"
         "s:6: 'size' makes no sense as -1\ns:7: 'direction' is '0 1' and not three numbers\n"},
        {"particlesystem A {\naffector Scale {\n\"rate 1\" \"onemitter 2\"\nemitter Point { }\n",
         "s:3: 'onemitter' 2: the template has 1 emitters\n"
         "s:4: '}' of the affector of line 2 is missing\n"},
        {"particlesystem A {\n\"quota 3\n\"bound maybe\" }\nparticlesystem A { }",
         "s:2: a line feed in a string: a quote is missing\n"},
        {"particlesystem A \"quota 3\" { }", "s:1: '{' is missing after 'A'\n"},
        {"particlesystem A { \"quota 1.5\" \"bound yes\" \"bound_expo 1\"\n",
         "s:1: 'quota' is '1.5' and not a whole number\n"
         "s:1: 'bound' is 'yes' and not true or false\n"},
        {"MD5Version 8 numbones 1", "s: bone 0 has no name\n"},
        {"MD5Version 8 numchannels 1",
         "s: channel 0 of '' has no keys\ns: channel 0 of '' ends before it starts\n"},
    };
    for (auto const &[script, says] : rows) {
        test::writeFile("s", script);
        EXPECT_EQ(run("s"), says[0] == 0 ? 0 : 1) << script;
        std::string const said = test::readFile("said");
        EXPECT_EQ(said.substr(0, std::string(says).size()), says);
        EXPECT_EQ(said.empty(), says[0] == 0);
    }
    EXPECT_EQ(run("-q s"), 1);
    EXPECT_EQ(test::readFile("said"), "");
    EXPECT_EQ(run("absent"), 3);
    EXPECT_EQ(run("."), 3); // a folder
    EXPECT_EQ(run(""), 2);
    EXPECT_EQ(run("--plugin absent s"), 2);
    EXPECT_EQ(run("--reference"), 0);
    EXPECT_NE(test::readFile(GUIDE).find(test::readFile("said")), std::string::npos) << "the guide is old";
    EXPECT_EQ(run(SCRIPTS "/*.particle " SCRIPTS "/../figure/*.md5*"), 0) << test::readFile("said");
}

} // namespace
