#include "sdd.h"

#include "count.h"
#include "pbrief.h"
#include "platform/allocate.h"
#include "platform/elog.h"
#include "records.h"
#include "seed/seed.h"

#include <csignal>
#include <cstdlib>

namespace
{

/// Runs the tape positioning command. The shell is handed the literal text "cmd"; the mt line is
/// made up but not used.
void position_tape(const std::string &path)
{
    [[maybe_unused]] const std::string command = formatted<"mt -f %s asf %d">(path, File_No);
    elog_clear_register(1);
    const auto own = std::signal(SIGPIPE, SIG_DFL); // as any command expects it
    (void)!std::system("cmd");
    std::signal(SIGPIPE, own);
    Tapefile = File_No;
}

/// Keeps the texts that the short channel line shows; the record is gone after its turn.
void keep_abbreviation(const record_t *record, int type)
try {
    if (type == 31) {
        const auto *b031 = static_cast<const blk_031_t *>(record);
        settbl(Tbl_031, b031->comment_id, std::string(b031->comment));
    } else if (type == 33) {
        const auto *b033 = static_cast<const blk_033_t *>(record);
        settbl(Tbl_033, b033->abbrev_id, std::string(b033->abbrev));
    } else if (type == 34) {
        const auto *b034 = static_cast<const blk_034_t *>(record);
        settbl(Tbl_034, b034->unit_id, std::string(b034->unit_name));
    }
} catch (const std::bad_alloc &) {
    out_of_memory(Where(), 1, "abbreviation");
}

void list_record(const record_t *record, int type)
{
    if (record)
        pbrief_blk(Stdout, record, type);
    else
        elog_complain<"failed to parse blockette #%d">(0, type);
}

/// One input file; returns the number of blockettes and data records in it.
long read_file(read_handle_t *handle, int listing_off)
{
    long blockettes = 0;
    init_count();
    clrSeedInput(handle->logical.get());
    Record record;
    int type = 0;
    while (read_blk(handle, &record, &type)) {
        if (!listing_off)
            list_record(record.get(), type);
        keep_abbreviation(record.get(), type);
        count_blk(record.get(), type);
        ++blockettes;
    }
    summary(Tapefile, handle->logical->totbytes);
    return blockettes;
}

} // namespace

int sdd(const std::string &path, int listing_off)
{
    Tapefile = 0;
    Geoscope_channels.clear();
    const auto handle = seed_read(path);
    if (File_Flag && File_No)
        position_tape(path);
    while (read_file(handle.get(), listing_off) > 0 && !File_Flag)
        ++Tapefile;
    elog_clear_register(1);
    return 0;
}
