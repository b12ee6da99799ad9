#include "platform/pf.h"

#include "platform/elog.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <unistd.h>

#define TOML_EXCEPTIONS 0
#include <toml++/toml.h>

namespace
{

/// The directory that holds the running program; empty when the system does not say.
std::string program_directory()
{
    std::string path(4096, '\0');
    const ssize_t size = readlink("/proc/self/exe", path.data(), path.size());
    path.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return path.substr(0, path.rfind('/'));
}

std::vector<std::string> search_path()
{
    const char *given = std::getenv("QUARL_PFPATH");
    if (!given || !*given)
        return {".", program_directory() + "/../share/quarl", QUARL_DATADIR};
    std::vector<std::string> directories;
    std::string_view rest = given;
    for (;;) {
        const std::size_t colon = rest.find(':');
        if (const std::string_view one = rest.substr(0, colon); !one.empty())
            directories.emplace_back(one);
        if (colon == std::string_view::npos)
            return directories;
        rest.remove_prefix(colon + 1);
    }
}

std::optional<std::string> find_file(const std::string &file)
{
    for (const std::string &directory : search_path())
        if (std::string path = formatted<"%s/%s">(directory, file); access(path.c_str(), F_OK) == 0)
            return path;
    return std::nullopt;
}

struct Close {
    void operator()(std::FILE *file) const { (void)std::fclose(file); }
};

/// Appends the whole file to `text`; false with errno set when it cannot be read.
bool read_file(const std::string &path, std::string *text)
{
    const std::unique_ptr<std::FILE, Close> file(std::fopen(path.c_str(), "rbe"));
    if (!file)
        return false;
    std::array<char, 4096> block;
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), file.get()))
        text->append(block.data(), count);
    return std::ferror(file.get()) == 0;
}

int complain_at(std::string_view origin, const toml::source_region &where, std::string_view what)
{
    elog_log<"%s:%u:%u: %s">(0, origin, where.begin.line, where.begin.column, what);
    return -1;
}

int read_table(const toml::table &from, std::string_view origin, Arr<std::string> *to)
{
    for (const auto &[key, value] : from) {
        const auto *text = value.as_string();
        if (!text)
            return complain_at(origin, value.source(),
                               "the value of '" + std::string(key.str()) + "' is not text");
        setarr(*to, key.str(), text->get());
    }
    return 0;
}

} // namespace

int pfparse(std::string_view text, std::string_view origin, Pf *pf)
{
    const toml::parse_result result = toml::parse(text, origin);
    if (!result)
        return complain_at(origin, result.error().source(), result.error().description());
    for (const auto &[key, value] : result.table()) {
        const auto *table = value.as_table();
        if (!table)
            return complain_at(origin, value.source(),
                               "'" + std::string(key.str()) + "' is not a table");
        if (read_table(*table, origin, &pf->tables[std::string(key.str())]) != 0)
            return -1;
    }
    return 0;
}

int pfread(std::string_view name, Pf *pf)
{
    const std::optional<std::string> path = find_file(std::string(name) + ".pf");
    if (!path)
        return -1;
    std::string text;
    if (!read_file(*path, &text)) {
        elog_log<"%s">(1, *path);
        return -1;
    }
    return pfparse(text, *path, pf);
}

const Arr<std::string> *pfget_arr(const Pf &pf, std::string_view key)
{
    return getarr(pf.tables, key);
}
