// What the command lines of all programs but quarl have in common.
#include "support/process.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <quarl/version.h>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

std::vector<std::string> programs()
{
    std::vector<std::string> all;
    std::istringstream names(QUARL_PROGRAM_NAMES); // quarl first
    for (std::string name; std::getline(names, name, ' ');)
        all.push_back(name);
    all.erase(all.begin());
    return all;
}

Outcome run_program_of(const std::string &name, const std::vector<std::string> &args)
{
    return run(std::filesystem::path(QUARL_PROGRAM).parent_path() / name, args, STDIN_FILENO);
}

TEST(CommandLine, HelpAndVersion)
{
    ASSERT_FALSE(programs().empty());
    for (const std::string &name : programs()) {
        SCOPED_TRACE(name);
        const Outcome help = run_program_of(name, {"--help"});
        EXPECT_EQ(help.status + help.err, "0");
        EXPECT_TRUE(help.out.starts_with("Usage: " + name + " ")) << help.out;
        for (const char *option : {"  -h, --help ", "  -V, --version "})
            EXPECT_NE(help.out.find(option), std::string::npos) << option;
        EXPECT_EQ(run_program_of(name, {"-h"}).out, help.out);
        for (const char *option : {"-V", "--version"}) {
            const Outcome version = run_program_of(name, {option});
            EXPECT_EQ(version.out, name + " " QUARL_VERSION "\n");
            EXPECT_EQ(version.status + version.err, "0");
        }
    }
}

TEST(CommandLine, WrongOptionsAndVolumesAreNamedOnce)
{
    int naming = 0;
    for (const std::string &name : programs()) {
        SCOPED_TRACE(name);
        for (const std::string option : {"-?", "--none", "--help=no"}) {
            const Outcome refused = run_program_of(name, {option});
            EXPECT_EQ(refused.err, "quarl: unknown option " + option + " (see quarl --help)\n");
            EXPECT_EQ(refused.out + refused.status, "2");
        }
        const Outcome missing = run_program_of(name, {"/nowhere/\x1b"});
        EXPECT_NE(missing.status, "0");
        const std::size_t first = missing.err.find(R"(/nowhere/\x1b)");
        naming += first != std::string::npos ? 1 : 0; // a volume is not the first operand of all
        EXPECT_EQ(first, missing.err.rfind("/nowhere/")) << missing.err;
    }
    EXPECT_GE(naming, 4);
}

} // namespace
