/* Runs a command and shows its peak resident size in KiB on standard error. The size of a program
   that starts another counts for that one too, so the starting program has to be a small one.
   Usage: peak COMMAND [ARGUMENT...] */
#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char *argv[])
{
    if (argc < 2) {
        fputs("usage: peak COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    const pid_t child = fork();
    if (child == 0) {
        execvp(argv[1], argv + 1);
        perror(argv[1]);
        _exit(127);
    }
    int status = 0;
    struct rusage usage;
    if (child < 0 || waitpid(child, &status, 0) != child || getrusage(RUSAGE_CHILDREN, &usage) != 0)
        return 2;
    fprintf(stderr, "%ld\n", usage.ru_maxrss);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
