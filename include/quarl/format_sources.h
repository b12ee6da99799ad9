// What is known of data formats besides a volume: a parameter file and a database.
#pragma once

#include <functional>
#include <memory>
#include <quarl/error.h>
#include <string>

namespace quarl
{

/// Read and opened before any volume is, so that a program can say first what is wrong with them.
/// The volumes that share one through their options are read in one thread.
class FormatSources
{
public:
    /// `message` gets what is said before an Error; when it is empty, that goes to standard error.
    explicit FormatSources(std::function<void(const Message &)> message = {});
    FormatSources(const FormatSources &) = delete;
    FormatSources &operator=(const FormatSources &) = delete;
    ~FormatSources();

    /// Reads quarl.pf: the first one in the folders of QUARL_PFPATH (with ":" between them) when
    /// that is set and not empty, else in the current folder, in ../share/quarl seen from the
    /// program, and where the library was installed. Throws Error when there is none, or when it
    /// cannot be read.
    void read_default_parameters();
    /// Reads a parameter file; its entries come before those that were read earlier.
    void read_parameters(const std::string &path);
    /// Opens a database, in place of one that was opened earlier: the path of an SQLite file, or a
    /// URL ("postgresql://..."). Throws Error when it cannot be opened.
    void open_database(const std::string &name);

    struct Parts;
    /// For the library.
    [[nodiscard]] Parts &parts() const { return *parts_; }

private:
    std::unique_ptr<Parts> parts_;
};

} // namespace quarl
