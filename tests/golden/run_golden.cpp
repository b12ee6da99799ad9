// Runs the tool for one case folder and compares what it writes, byte for byte:
//
//   run_golden QUARL CASE_FOLDER
//
// volume.txt  recipe of the volume (support/recipe.h)        absent: no volume
// args        arguments, one per line; @VOLUME@ is the volume  absent: the volume alone
// stdout, stderr, status   what is expected                  absent: nothing, nothing, 0
// quarl.pf    parameter file of the case                     absent: the installed one
// how         one run per line, each a few of these words    absent: one plain run
//               stdin pipe packets   feed the volume there, packets with file marks between its
//               files gzip compress bzip2 xz lzma zstd lz4   compress the volume merged stderr goes
//               where stdout goes, in the order of writing nopf                 no parameter file
//               can be found
//
// The tool runs in an empty folder of its own, where the volume's name is volume.seed.
#include "compose/files.h"
#include "support/compressed.h"
#include "support/process.h"
#include "support/recipe.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <numeric>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace
{

using Words = std::vector<std::string>;

constexpr const char *Volume_Name = "volume.seed";

bool has(const Words &words, std::string_view word)
{
    return std::find(words.begin(), words.end(), word) != words.end();
}

Words split(const std::string &text, char mark)
{
    Words parts;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(mark, at), text.size());
        parts.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return parts;
}

std::string read_or(const fs::path &path, const std::string &otherwise)
{
    return fs::exists(path) ? read_file(path) : otherwise;
}

[[noreturn]] void fail(const char *what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

/// A folder that vanishes with this object.
class Scratch
{
public:
    Scratch()
    {
        std::string name = fs::temp_directory_path() / ("golden." + std::string(6, 'X'));
        if (!mkdtemp(name.data()))
            fail("mkdtemp");
        path_ = name;
    }
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;
    ~Scratch()
    {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    [[nodiscard]] const fs::path &path() const { return path_; }

private:
    fs::path path_;
};

/// What the tool reads as standard input, and the end that feeds it (-1: nobody does).
struct Feed {
    int tool = -1;
    int feeder = -1;
};

Feed open_feed(const Words &how, const fs::path &volume)
{
    int ends[2] = {-1, -1};
    if (has(how, "stdin"))
        return {open(volume.c_str(), O_RDONLY | O_CLOEXEC), -1};
    if (has(how, "pipe") && pipe2(ends, O_CLOEXEC) == 0)
        return {ends[0], ends[1]};
    if (has(how, "packets") && socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) == 0)
        return {ends[0], ends[1]};
    return {open("/dev/null", O_RDONLY | O_CLOEXEC), -1};
}

/// Pipe: everything in a row. Packets: pieces that divide records anywhere, an empty packet behind
/// each file. The tool may stop reading before the end.
void feed(int fd, const Words &how, const std::vector<std::string> &files)
{
    constexpr std::size_t Piece_Size = 1000;
    const bool packets = has(how, "packets");
    for (const std::string &file : files) {
        for (std::size_t at = 0; at < file.size(); at += Piece_Size)
            if (write(fd, file.data() + at, std::min(Piece_Size, file.size() - at)) < 0)
                return;
        if (packets && send(fd, "", 0, MSG_NOSIGNAL) < 0)
            return;
    }
}

std::vector<std::string> input_files(const fs::path &test, const Words &how)
{
    std::vector<std::string> files;
    if (fs::exists(test / "volume.txt"))
        files = parse_recipe(read_file(test / "volume.txt")).files();
    for (const char *filter : Filters)
        if (has(how, filter))
            for (std::string &file : files)
                file = compressed(file, filter);
    return files;
}

Words arguments(const fs::path &test, const Words &how)
{
    const bool by_name = !has(how, "stdin") && !has(how, "pipe") && !has(how, "packets");
    Words args = split(read_or(test / "args", by_name ? "@VOLUME@\n" : ""), '\n');
    std::replace(args.begin(), args.end(), std::string("@VOLUME@"), std::string(Volume_Name));
    return args;
}

fs::path parameter_folder(const fs::path &test, const Words &how, const fs::path &empty)
{
    if (has(how, "nopf"))
        return empty;
    const bool own = fs::exists(test / "quarl.pf");
    return own ? test : (test / "../../../etc").lexically_normal();
}

Outcome run_how(const std::string &tool, const fs::path &test, const Words &how)
{
    const Scratch scratch;
    const fs::path folder = scratch.path() / "work";
    fs::create_directory(folder);
    const std::vector<std::string> files = input_files(test, how);
    write_file(folder / Volume_Name, std::accumulate(files.begin(), files.end(), std::string()));
    setenv("QUARL_PFPATH", parameter_folder(test, how, folder).c_str(), 1);

    const Feed ends = open_feed(how, folder / Volume_Name);
    const int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC;
    const int out = open((scratch.path() / "out").c_str(), flags, 0600);
    const int err =
        open((scratch.path() / (has(how, "merged") ? "out" : "err")).c_str(), flags, 0600);
    const pid_t child = start(tool, arguments(test, how), {ends.tool, out, err}, folder);
    for (const int fd : {ends.tool, out, err})
        close(fd);
    if (ends.feeder >= 0) {
        feed(ends.feeder, how, files);
        close(ends.feeder);
    }
    std::string status = wait_for(child);
    return {read_or(scratch.path() / "out", ""), read_or(scratch.path() / "err", ""), status};
}

/// A line between bars, its control characters in hexadecimal.
std::string visible(const std::string &line)
{
    std::string shown = "|";
    for (const char c : line) {
        char hex[8];
        std::snprintf(hex, sizeof hex, "\\x%02x", c & 0xff);
        shown += (c & 0xff) < ' ' ? hex : std::string(1, c);
    }
    return shown + "|";
}

/// Prints the first line that differs; true when none does.
bool same(const char *what, const std::string &expected, const std::string &actual)
{
    if (expected == actual)
        return true;
    const Words want = split(expected, '\n');
    const Words have = split(actual, '\n');
    std::size_t i = 0;
    while (i < want.size() && i < have.size() && want[i] == have[i])
        i++;
    std::printf("%s differs at line %zu (%zu lines expected, %zu written)\n", what, i + 1,
                want.size(), have.size());
    std::printf("  expected %s\n", i < want.size() ? visible(want[i]).c_str() : "no more");
    std::printf("  written  %s\n", i < have.size() ? visible(have[i]).c_str() : "no more");
    if (i == want.size() && i == have.size())
        std::printf("  only one of them ends in a newline\n");
    return false;
}

/// The runs that a case asks for; throws on a word that means nothing.
std::vector<Words> runs(const fs::path &test)
{
    Words known = {"plain", "stdin", "pipe", "packets", "merged", "nopf"};
    known.insert(known.end(), std::begin(Filters), std::end(Filters));
    std::vector<Words> all;
    for (const std::string &line : split(read_or(test / "how", "plain\n"), '\n')) {
        all.push_back(split(line, ' '));
        for (const std::string &word : all.back())
            if (!has(known, word))
                throw std::runtime_error("unknown word '" + word + "' in how");
    }
    return all;
}

bool run_case(const std::string &tool, const fs::path &test)
{
    bool passed = true;
    for (const Words &how : runs(test)) {
        const Outcome outcome = run_how(tool, test, how);
        bool all = same("status", read_or(test / "status", "0\n"), outcome.status + "\n");
        all = same("stderr", read_or(test / "stderr", ""), outcome.err) && all;
        all = same("stdout", read_or(test / "stdout", ""), outcome.out) && all;
        if (!all)
            std::printf("in the run '%s' of %s\n", how.at(0).c_str(), test.c_str());
        passed = all && passed;
    }
    return passed;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 3) {
        std::fprintf(stderr, "Usage: run_golden QUARL CASE_FOLDER\n");
        return 2;
    }
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return run_case(fs::canonical(argv[1]), fs::canonical(argv[2])) ? 0 : 1;
    } catch (const std::exception &e) {
        std::fprintf(stderr, "run_golden: %s\n", e.what());
        return 2;
    }
}
