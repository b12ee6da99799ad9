// The parts of a stage, taken from a channel's blockettes and from the response dictionary.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <quarl/item.h>
#include <quarl/records.h>
#include <quarl/stages.h>
#include <string>
#include <utility>

namespace quarl
{

/// A part with the number of its stage.
struct StagePart {
    int stage = 0;
    Part part;
};

/// Makes filters: names their units, as far as they are known, and keeps one copy of equal ones.
class FilterMaker
{
public:
    /// `unit` gives the name of the unit with a code.
    explicit FilterMaker(std::function<std::string(int code)> unit) : unit_(std::move(unit)) {}
    Part operator()(FilterShape shape, int input, int output, const char *name = "");

private:
    std::function<std::string(int code)> unit_;
    Interner<Filter> kept_;
};

/// What a blockette of a channel (053 to 058, 061, 062) says of a stage. Nothing for other types.
/// Lists have the entries that stand in the blockette, when its count is above.
std::optional<StagePart> stage_part(const Item &item, FilterMaker *make);

/// The same of a blockette of the response dictionary (041, 043 to 048).
std::optional<Part> dictionary_part(const Item &item, FilterMaker *make);

} // namespace quarl
