#include "support/compressed.h"

#include <archive.h>
#include <archive_entry.h>

#include <memory>
#include <stdexcept>

std::string compressed(const std::string &bytes, const char *filter)
{
    const std::unique_ptr<archive, int (*)(archive *)> out(archive_write_new(), archive_write_free);
    const std::unique_ptr<archive_entry, void (*)(archive_entry *)> entry(archive_entry_new(),
                                                                          archive_entry_free);
    std::string result(bytes.size() + 65536, '\0');
    std::size_t used = 0;
    archive_entry_set_pathname(entry.get(), "volume");
    archive_entry_set_filetype(entry.get(), AE_IFREG);
    if (archive_write_add_filter_by_name(out.get(), filter) != ARCHIVE_OK ||
        archive_write_set_format_raw(out.get()) != ARCHIVE_OK ||
        archive_write_set_bytes_in_last_block(out.get(), 1) != ARCHIVE_OK ||
        archive_write_open_memory(out.get(), result.data(), result.size(), &used) != ARCHIVE_OK ||
        archive_write_header(out.get(), entry.get()) != ARCHIVE_OK ||
        archive_write_data(out.get(), bytes.data(), bytes.size()) < 0 ||
        archive_write_close(out.get()) != ARCHIVE_OK)
        throw std::runtime_error(archive_error_string(out.get()));
    result.resize(used);
    return result;
}
