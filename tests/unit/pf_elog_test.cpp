// Messages, standard output that cannot be written, and the parameter file.
#include "compose/files.h"
#include "platform/elog.h"
#include "platform/pf.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>

namespace
{

TEST(Elog, Messages)
{
    const struct {
        void (*write)();
        int error;
        const char *reason, *shown;
    } cases[] = {
        {[] { elog_complain<MessageKind::usage, "text">(0); }, EIO, "", "quarl: text\n"},
        {[] { elog_log<MessageKind::usage, "text\n\n">(1); }, ENOENT, "",
         "quarl: text: No such file or directory\n"},
        {[] { elog_complain<MessageKind::usage, "text">(1); }, 0, "", "quarl: text\n"},
        {[] { elog_complain<MessageKind::usage, "a %s\n">(1, std::string_view("b\n")); }, EIO,
         "corrupt", "quarl: a b: corrupt\n"},
        {[] { elog_log<MessageKind::usage, "\n\n*** %d\n  more\n">(0, 7); }, 0, "",
         "quarl: \n\n*** 7\n  more\n"},
        {[] { elog_log<MessageKind::usage, "\n">(1); }, ENOENT, "",
         "quarl: : No such file or directory\n"},
    };
    for (const char *program : {"../quarl", "quarl"})
        for (const auto &c : cases) {
            const Captured shown = capture([&] {
                Console named(program, MessageTexts::raw);
                const Current<Host> host(named);
                elog_set_reason(c.reason);
                errno = c.error;
                c.write();
                EXPECT_EQ(errno, c.error);
                EXPECT_EQ(elog_take_reason(), ""); // used up
                named.elog_clear_register();
            });
            EXPECT_EQ(shown.err, c.shown);
        }
}

/// `text`, `times` times.
std::string repeated(std::string_view text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

TEST(Elog, KeepsTheOrderOfBothStreams)
{
    const Captured shown = capture([] {
        dup2(STDOUT_FILENO, STDERR_FILENO);
        Console both("quarl");
        const int status = run_guarded(&both, [&]() -> int {
            print<"one ">(both.out());
            elog_log<MessageKind::usage, "two">(0);
            print<"three ">(both.out());
            both.say_lines([](Out &out) { print<"<listing\x1b> ">(out); });
            elog_die<MessageKind::usage, "four">(0);
        });
        EXPECT_EQ(status, 1);
    });
    EXPECT_EQ(shown.out, "one quarl: two\nthree <listing\\x1b> quarl: four\n");
}

TEST(Console, ShowsWhatWouldCommandATerminalEscaped)
{
    using enum MessageKind;
    const struct {
        MessageKind kind;
        std::string text;
        std::string reason;
        std::string shown;
        std::string raw;
    } cases[] = {
        {usage, "\x1b[31m a\nb\t\x7f", "", R"(\x1b[31m a\x0ab\x09\x7f)", "\x1b[31m a\nb\t\x7f"},
        {usage, "Zürich 北 \xc2\x9b \xfc\xe2\x80\xae", "", R"(Zürich 北 \xc2\x9b \xfc\xe2\x80\xae)",
         "Zürich 北 \xc2\x9b \xfc\xe2\x80\xae"},
        {database_not_read, "of a\nb", "no\n\tsuch\r", "of a\\x0ab: no\n\tsuch\\x0d",
         "of a\nb: no\n\tsuch\r"},
        {formats_differ, "\n*** \x1b", "", "\n*** \\x1b", "\n*** \x1b"},
        {usage, std::string(600, '\a'), "", repeated(R"(\x07)", 600), std::string(600, '\a')},
    };
    for (const auto &c : cases)
        for (const MessageTexts texts : {MessageTexts::escaped, MessageTexts::raw}) {
            const Captured shown = capture([&] {
                Console named("qu\x1b", texts);
                named.say({c.kind, c.text, c.reason, 0, {}, nullptr});
                named.elog_clear_register();
            });
            EXPECT_EQ(shown.err, texts == MessageTexts::raw ? "qu\x1b: " + c.raw + "\n"
                                                            : R"(qu\x1b: )" + c.shown + "\n");
        }
}

TEST(Out, EndsTheRunWhenItCannotBeWritten)
{
    const auto onto = [](int fd) {
        return capture([&] {
            dup2(fd, STDOUT_FILENO);
            close(fd);
            elog_set_reason("of another fault"); // which must not pass for that of this one
            print<"text">(out());
            console().elog_clear_register();
        });
    };
    const Captured full = onto(open("/dev/full", O_WRONLY));
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(full.err, "quarl: Can't write standard output: No space left on device\n");
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    std::signal(SIGPIPE, SIG_IGN);
    const Captured closed = onto(ends[1]);
    EXPECT_EQ(closed.status, Reader_Gone);
    EXPECT_EQ(closed.err, "");
}

TEST(Out, WaitsForAReaderThatIsSlow)
{
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    std::string received;
    Out out(ends[1]);
    const std::string sent(1000000, 'x');
    if (const pid_t writer = fork(); writer == 0) {
        out.write(sent);
        out.flush();
        _exit(0);
    }
    close(ends[1]);
    char block[4096];
    for (ssize_t n = 0; (n = read(ends[0], block, sizeof block)) != 0;)
        if (n > 0)
            received.append(block, static_cast<std::size_t>(n));
    EXPECT_EQ(received, sent);
}

/// "a.a.a" and so on.
std::string parts(int count)
{
    std::string key = "a";
    while (--count > 0)
        key += ".a";
    return key;
}

TEST(Pf, ReadsTablesOfTexts)
{
    const std::string dots(40, '.');
    const struct {
        std::string text;
        int result;
        std::string message; ///< behind the program's name
    } cases[] = {
        {"", 0, ""},
        {"[data_type_aliases]\nSTEIM2 = \"Steim2\" # what\n\"a b\" = 'c\\d'\n", 0, ""},
        {"[data_type_aliases]\nSTEIM2 = 2\n", -1, "origin:2:10: the value of 'STEIM2' is not text"},
        {"key = 'text'\n[data_type_aliases]\n", 0, ""},
        {"\n  key = 7\n", -1, "origin:2:9: 'key' is not a table"},
        {"[a]\nx = 'y'\n[a]\n", -1, "origin:3:"},
        {"[a]\nx = 'y\n", -1, "origin:2:"},
        {std::string("[a]\nx = '\0'\n", 12), -1, "origin:2:"},
        {"\n[b." + parts(31) + "]\n" + parts(32) + " = ''", -1, "origin:2:1: the value of 'a' is"},
        {"\n" + parts(33) + " = ''", -1, "origin:2: nested deeper than 32\n"},
        {"\n" + parts(240000) + " = ''", -1, "origin:2: nested deeper than 32\n"},
        {"[" + parts(240000) + "]\n", -1, "origin:1: nested deeper than 32\n"},
        {"[b]\nx={b=\"\"\"b\"\"\"\"," + parts(240000) + "=1}", -1, "origin:2: nested deeper"},
        {"x = '''\n\"''' #\" " + dots + "\ny='" + dots + "'\nz=\"\\\"" + dots + "\"\n", 0, ""},
        {"x = " + std::string(33, '['), -1, "origin:1: nested deeper than 32\n"},
        {"x = " + std::string(240000, '{'), -1, "origin:1: nested deeper than 32\n"},
    };
    for (const auto &c : cases) {
        Pf pf;
        const Captured shown =
            capture([&] { EXPECT_EQ(pfparse(c.text, "origin", &pf), c.result) << c.text; });
        EXPECT_EQ(shown.err.empty(), c.result == 0) << shown.err;
        EXPECT_TRUE(shown.err.starts_with(c.message.empty() ? "" : "quarl: " + c.message))
            << shown.err;
        if (const auto *aliases = pfget_arr(pf, "data_type_aliases");
            aliases && !aliases->empty()) {
            EXPECT_EQ(*getarr(*aliases, "STEIM2"), "Steim2");
            EXPECT_EQ(*getarr(*aliases, "a b"), "c\\d");
        }
        EXPECT_EQ(pfget_arr(pf, "other"), nullptr);
    }
}

TEST(Pf, IsASmallRegularFile)
{
    const std::string path =
        std::filesystem::temp_directory_path() / ("pf_test." + std::to_string(getpid()));
    const auto read = [](const std::string &from) {
        Pf pf;
        return capture([&] { print<"%d">(out(), pfread_file(from, &pf)); });
    };
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(read(path).err, "quarl: " + path + ": not a regular file\n");
    std::filesystem::remove(path);
    EXPECT_EQ(read("/dev/zero").err, "quarl: /dev/zero: not a regular file\n");
    std::string text((1 << 20) - 1, '#');
    write_file(path, text += '\n');
    EXPECT_EQ(read(path).out, "0");
    write_file(path, text += '\n');
    EXPECT_EQ(read(path).out, "-1");
    EXPECT_EQ(read(path).err, "quarl: " + path + ": larger than 1 MiB\n");
    std::filesystem::remove(path);
}

TEST(Pf, IsTheFirstOneOfTheSearchPath)
{
    const auto root =
        std::filesystem::temp_directory_path() / ("pf_test." + std::to_string(getpid()));
    for (const char *directory : {"a", "b", "c", "d/named.pf"})
        std::filesystem::create_directories(root / directory);
    std::filesystem::current_path(root / "c");
    write_file("../a/named.pf", "[from]\nx = 'a'\n");
    write_file("../b/named.pf", "[from]\nx = 'b'\n");
    write_file("named.pf", "[from]\nx = 'c'\n");
    const std::string at = root.string();
    const struct {
        std::string path, found;
    } cases[] = {
        {at + "/b", "b"},
        {at + "/a:" + at + "/b", "a"},
        {at + "/none::" + at + "/b:" + at + "/a", "b"},
        {"", "c"},
        {":" + at + "/none", "-"}, // and nothing else
        {at + "/d", "-"},          // a directory cannot be read
    };
    for (const auto &c : cases) {
        setenv("QUARL_PFPATH", c.path.c_str(), 1);
        Pf pf;
        int result = 0;
        const Captured shown = capture([&] { result = pfread("named", &pf); });
        const auto *from = pfget_arr(pf, "from");
        EXPECT_EQ(from ? *getarr(*from, "x") : "-", c.found) << c.path;
        EXPECT_EQ(result, c.found == "-" ? -1 : 0) << c.path;
        EXPECT_EQ(shown.err,
                  c.path.ends_with("/d") ? "quarl: " + at + "/d/named.pf: Is a directory\n" : "");
    }
    std::filesystem::current_path("/");
    std::filesystem::remove_all(root);
}

} // namespace
