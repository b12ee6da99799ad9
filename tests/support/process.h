// Runs the tool as a process of its own.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

/// Two ends of a pipe; what is still open is closed with it.
struct Pipe {
    Pipe();
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;
    ~Pipe();
    void close_read();
    void close_write();

    int read_end = -1;
    int write_end = -1;
};

/// What a finished run has written; `status` is its exit status or "signal N".
struct Outcome {
    std::string out;
    std::string err;
    std::string status;
};

/// Starts `tool` under the name quarl, in `folder`, with these descriptors as 0, 1 and 2.
pid_t start(const std::string &tool, std::vector<std::string> args, const std::array<int, 3> &wires,
            const std::string &folder = ".");

/// Waits for its end; the status as in Outcome.
std::string wait_for(pid_t child);

/// Runs `tool` to its end. `in` becomes its standard input.
Outcome run(const std::string &tool, const std::vector<std::string> &args, int in);

/// Writes everything to a descriptor; false when its reader has gone.
bool write_all(int fd, std::string_view bytes);

/// Reads from `fd` until `size` bytes have come, the end of file, or ten seconds of silence.
std::string receive(int fd, std::size_t size);
