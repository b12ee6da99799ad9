// Merges what volumes say into one source.
#pragma once

#include "archive/sql.h"

#include <string>
#include <vector>

namespace quarl::archive
{

/// Two volumes that contradict each other.
struct Contradiction {
    std::int64_t volume = 0; ///< the one that is merged
    std::int64_t other = 0;
    bool wins = false;   ///< `volume` does
    std::string subject; ///< "IU_ANMO_00_BHZ 2018,191"
    std::string told;    ///< what differs: "sensitivity 2e+09 here, 1e+09"
};

/// One source, and the temporary tables beside it: new_ (what volumes say now), key_ (what is
/// touched), was_ (what volumes that are gone have said), flip_ (what has won or lost).
class SourceMerge
{
public:
    SourceMerge(DatabaseWriter *database, const Source &source);

    /// Takes back what the volumes of `gone_volume` say.
    void take_back();
    /// `rows` are a JSON array of volume, time of its writing, number, digest and columns.
    void add(const std::string &rows);
    /// Lets go what nobody says any more, and elects who wins.
    void elect();
    /// Of what was added.
    [[nodiscard]] std::vector<Contradiction> contradictions();
    /// Ready for the next volumes.
    void clear();
    /// Whether something has won or lost since.
    [[nodiscard]] bool has_flipped() const { return has_flipped_; }

private:
    [[nodiscard]] std::string sql(std::string_view text) const;
    void make_tables();
    [[nodiscard]] Contradiction read_contradiction(const TextRows &rows, std::size_t row) const;

    DatabaseWriter *database_;
    const Source &source_;
    Dialect dialect_;
    std::string columns_;
    std::string insert_;
    bool has_new_ = false;
    bool has_gone_ = false;
    bool has_flipped_ = false;
};

} // namespace quarl::archive
