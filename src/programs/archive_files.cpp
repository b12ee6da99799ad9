#include "programs/archive_files.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

namespace quarl
{

namespace
{

namespace fs = std::filesystem;

} // namespace

ArchiveFiles::ArchiveFiles(std::vector<std::string> names, std::istream *list)
    : names_(std::move(names)), list_(list)
{
}

void ArchiveFiles::open_folder(const std::string &path)
{
    std::error_code error;
    std::vector<std::string> found;
    for (auto each = fs::directory_iterator(path, error); !error && each != fs::end(each);
         each.increment(error))
        found.push_back(each->path().string());
    if (error)
        faults_.push_back(path + ": " + error.message());
    std::sort(found.begin(), found.end(), std::greater<>());
    folders_.push_back(std::move(found));
}

/// Links to folders are not followed: they may lead in circles.
std::optional<ArchiveFiles::File> ArchiveFiles::next_below()
{
    while (!folders_.empty()) {
        if (folders_.back().empty()) {
            folders_.pop_back();
            continue;
        }
        const std::string path = std::move(folders_.back().back());
        folders_.back().pop_back();
        std::error_code error;
        if (fs::symlink_status(path, error).type() == fs::file_type::directory)
            open_folder(path);
        else if (fs::is_regular_file(path, error))
            return File{path, false};
    }
    return {};
}

std::optional<std::string> ArchiveFiles::next_name()
{
    for (std::string line; in_list_;) {
        if (!std::getline(*list_, line))
            in_list_ = false;
        else if (!line.empty())
            return line;
    }
    if (at_ == names_.size())
        return {};
    if (names_[at_] != "-")
        return names_[at_++];
    ++at_;
    in_list_ = true;
    return next_name();
}

std::optional<ArchiveFiles::File> ArchiveFiles::next()
{
    for (;;) {
        if (auto file = next_below())
            return file;
        const std::optional<std::string> name = next_name();
        if (!name)
            return {};
        std::error_code error;
        if (!fs::is_directory(*name, error))
            return File{*name, true};
        open_folder(*name);
    }
}

std::vector<std::string> ArchiveFiles::take_faults() { return std::exchange(faults_, {}); }

} // namespace quarl
