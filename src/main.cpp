// Start-up: parameter file, options, database; then the run loop.
#include "platform/banner.h"
#include "platform/elog.h"
#include "records.h"
#include "sdd.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <unistd.h>

namespace
{

[[noreturn]] void usage()
{
    Stdout.flush();
    print<"\nUsage: %s [-d database] [-f fileno] [-sv] [seed]\n">(Stderr, Program_Name);
    banner(Program_Name.c_str(), nullptr);
    end_process(1);
}

/// Fills a standard descriptor that was closed with one that fails: the volume or a database's
/// socket must not come to stand where the listing goes.
void keep_standard_descriptors()
{
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(fd, F_GETFD) < 0)
            (void)open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

void open_database(const char *name)
{
    if (VXdbopen(name, "r+", &Db) != 0)
        elog_die<"Can't open database %s\n">(1, std::string_view(name));
}

/// Reads the options in command-line order, each acted on at once; true when the listing is off.
bool read_options(int argc, char *argv[])
{
    bool listing_off = false;
    // The "+" ends the options at the first operand.
    for (int option = 0; (option = getopt(argc, argv, "+f:sSd:vVH")) != -1;) {
        switch (option) {
        case 'f':
            File_No = static_cast<int>(std::strtol(optarg, nullptr, 10));
            File_Flag = 1;
            break;
        case 's':
            listing_off = true;
            break;
        case 'S':
            ++Simplify;
            break;
        case 'd':
            open_database(optarg);
            break;
        case 'v':
            ++Verbose_Flag;
            break;
        case 'V':
            banner(Program_Name.c_str(), nullptr);
            end_process(0);
        default:
            usage();
        }
    }
    return listing_off;
}

} // namespace

int main(int argc, char *argv[])
try {
    std::signal(SIGPIPE, SIG_IGN); // the write that fails ends the run
    keep_standard_descriptors();
    elog_init(argc, argv);
    if (pfread("quarl", &Parameters) != 0)
        elog_die<"Couldn't read parameter file quarl.pf.\n">(0);
    const bool listing_off = read_options(argc, argv);
    if (argc - optind > 1)
        usage();
    const std::string path = optind < argc ? argv[optind] : "-";
    Tbl_031 = newtbl<std::string>(10);
    Tbl_033 = newtbl<std::string>(10);
    Tbl_034 = newtbl<std::string>(10);
    end_process(sdd(path, listing_off));
} catch (const std::bad_alloc &) {
    elog_die<"Out of memory\n">(0);
}
