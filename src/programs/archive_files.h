// The files that an archive is made of: as they are named, below folders, or in a list.
#pragma once

#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace quarl
{

/// Yields one file after the other; of folders, all below in order of their names. Memory goes with
/// the number of files in a folder and of folders in each other.
class ArchiveFiles
{
public:
    struct File {
        std::string path;
        bool named = true; ///< by the user: it has to be a volume
    };

    /// "-" among the names stands for those in `list`, one a line.
    ArchiveFiles(std::vector<std::string> names, std::istream *list);

    /// Nothing at the end.
    std::optional<File> next();
    /// Folders that could not be read, each with the reason; they are told once.
    std::vector<std::string> take_faults();

private:
    void open_folder(const std::string &path);
    std::optional<File> next_below();
    std::optional<std::string> next_name();

    std::vector<std::string> names_;
    std::size_t at_ = 0;
    std::istream *list_;
    bool in_list_ = false;
    std::vector<std::vector<std::string>> folders_; ///< what is left of each, last one first
    std::vector<std::string> faults_;
};

} // namespace quarl
