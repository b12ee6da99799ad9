/* Lists the data records of a file through libmseed: six fields a record, or (-c) how many.
   Usage: mseed_list [-c] FILE */
#include <libmseed.h>
#include <stdio.h>
#include <string.h>

static void list_record(MSRecord *record)
{
    char source[50];
    char start[40];
    msr_srcname(record, source, 0);
    ms_hptime2seedtimestr(record->starttime, start, 1);
    printf("%s, %d, %lld, %.10g, %s, %c\n", source, record->reclen, (long long)record->samplecnt,
           record->samprate, start, record->dataquality);
}

int main(int argc, char *argv[])
{
    if (argc == 2 && strcmp(argv[1], "-V") == 0) {
        puts("libmseed " LIBMSEED_VERSION);
        return 0;
    }
    const int count_only = argc == 3 && strcmp(argv[1], "-c") == 0;
    if (argc != 2 + count_only) {
        fputs("usage: mseed_list [-c] FILE\n", stderr);
        return 2;
    }
    const char *file = argv[argc - 1];
    const int any_length = -1, skip_other = 1, no_samples = 0, quiet = 0;
    MSRecord *record = NULL;
    long long count = 0;
    int code = 0;
    while ((code = ms_readmsr(&record, file, any_length, NULL, NULL, skip_other, no_samples,
                              quiet)) == MS_NOERROR) {
        ++count;
        if (!count_only)
            list_record(record);
    }
    if (count_only)
        printf("%lld\n", count);
    ms_readmsr(&record, NULL, 0, NULL, NULL, 0, 0, 0);
    return code == MS_ENDOFFILE ? 0 : 1;
}
