// Counts that promise more than there is, and references to what is large: what an inventory keeps
// of them.
#include "compose/blockette_text.h"
#include "compose/files.h"
#include "compose/volume.h"
#include "platform/format.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <quarl/inventory.h>
#include <quarl/volume.h>
#include <unistd.h>

namespace quarl
{
namespace
{

using Blockettes = std::vector<std::pair<int, std::string>>;

/// Of a volume with these dictionaries, and one channel with these responses.
Inventory inventory_of(const Blockettes &dictionaries, const Blockettes &responses)
{
    VolumeBuilder builder(4096);
    builder.header('A');
    for (const auto &[type, fields] : dictionaries)
        builder.blockette(type, fields);
    builder.header('S').blockette(50, b050({})).blockette(52, b052({}));
    for (const auto &[type, fields] : responses)
        builder.blockette(type, fields);
    const std::string path = "promises-" + std::to_string(getpid()) + ".seed";
    write_file(path, builder.volume());
    Inventory inventory;
    for (const Item &item : Volume(path, {.message = [](const Message &) {}}))
        inventory.add(item);
    std::remove(path.c_str());
    return inventory;
}

struct Entries {
    std::string operator()(const PolesZeros &s) const { return text(s.zeros, s.poles); }
    std::string operator()(const Coefficients &s) const
    {
        return text(s.numerators, s.denominators);
    }
    std::string operator()(const ResponseList &s) const { return text(s.entries); }
    std::string operator()(const GenericResponse &s) const { return text(s.corners); }
    std::string operator()(const Fir &s) const { return text(s.coefficients); }
    std::string operator()(const Polynomial &s) const { return text(s.coefficients); }
    template <class... List> static std::string text(const List &...lists)
    {
        return ((" " + std::to_string(lists.size())) + ...);
    }
};

/// The entries of everything that has some.
std::string kept(const Inventory &inventory)
{
    std::string all = Entries::text(inventory.station_index(), inventory.span_index());
    const auto show = [&](const std::vector<Part> &parts) {
        for (const Part &part : parts)
            if (const auto *filter = std::get_if<FilterPtr>(&part))
                all += std::visit(Entries(), (*filter)->shape());
    };
    if (const DictionaryEntry *format = inventory.entry(Dictionary::data_formats, 1))
        all += Entries::text(format->keys);
    if (const DictionaryEntry *entry = inventory.entry(Dictionary::responses, 1))
        show(entry->parts);
    for (const StagePtr &stage : inventory.channel_epochs().front().response.stages)
        show(stage->parts);
    return all;
}

std::string reals(int count, std::size_t width = 12)
{
    std::string all;
    for (int i = 1; i <= count; ++i)
        all += std::string(width - 1, ' ') + "7";
    return all;
}

TEST(Promises, AreKeptAsFarAsTheyAreHeld)
{
    const std::string paz = "A001001" + reals(2);
    const struct {
        int type;
        std::string fields;
        std::string expected; ///< behind the entries of the indexes
    } cases[] = {
        {11, "999AAAAA000001BBBBB000002CCCCC00000", " 2 0"},
        {12, "09992020~2021~0000012021~2022~00000", " 0 2"},
        {30, "F~000105099a~~b~", " 0 0 3"},
        {43, "0001~" + paz + "002" + reals(4) + "099" + reals(5), " 0 0 2 0"},
        {43, "0001~" + paz + "001" + reals(4) + "999" + reals(11), " 0 0 1 2"},
        {44, "0001~D0010010001" + reals(2) + "9999" + reals(3), " 0 0 1 1"},
        {45, "0001~0010019999" + reals(14), " 0 0 2"},
        {46, "0001~0010019999" + reals(3), " 0 0 1"},
        {53, "A01001001" + reals(2) + "001" + reals(4) + "999" + reals(11), " 0 0 1 2"},
        {53, "A01001001" + reals(2) + "999", " 0 0 0 0"},
        {54, "D010010019999" + reals(3), " 0 0 1 0"},
        {54, "D010010010001" + reals(2) + "9999" + reals(2), " 0 0 1 1"},
        {55, "010010019999" + reals(11), " 0 0 2"},
        {61, "01 F ~A0010019999" + reals(3, 14), " 0 0 3"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(formatted<"B%03d %s">(c.type, c.fields));
        const Blockettes one{{c.type, c.fields}};
        const bool of_channel = c.type >= 52 && c.type < 63;
        // The second 9 of 45 and 55 is not whole.
        EXPECT_EQ(
            kept(inventory_of(of_channel ? Blockettes() : one, of_channel ? one : Blockettes())),
            c.expected);
    }
}

/// A blockette of filter 1: coefficients, of so many.
std::pair<int, std::string> part(char symmetry, int promised,
                                 const std::vector<double> &coefficients)
{
    std::string fields = formatted<"0001F~%c001002%04d">(symmetry, promised);
    for (const double coefficient : coefficients)
        fields += formatted<"%14g">(coefficient);
    return {41, fields};
}

TEST(References, ShareOneFilter)
{
    const struct {
        Blockettes dictionary;
        std::vector<double> coefficients;
        std::size_t redefined = 0;
    } cases[] = {
        {{part('A', 3, {1, 2}), part('A', 3, {3})}, {1, 2, 3}},
        {{part('A', 3, {1}), part('A', 3, {}), part('A', 3, {2})}, {1, 2}},
        {{part('A', 2, {1, 2}), part('A', 2, {})}, {1, 2}},
        {{part('A', 3, {1}), part('B', 3, {2})}, {2}, 1},
        {{part('A', 3, {1, 2}), part('A', 3, {3, 4})}, {3, 4}, 1},
    };
    for (const auto &c : cases) {
        const Inventory inventory = inventory_of(c.dictionary, {{60, "0201020001000102020001"
                                                                     "0001"}});
        const DictionaryEntry &entry = *inventory.entry(Dictionary::responses, 1);
        ASSERT_EQ(entry.parts.size(), 1U);
        EXPECT_EQ(std::get<Fir>(std::get<FilterPtr>(entry.parts[0])->shape()).coefficients,
                  c.coefficients);
        EXPECT_EQ(entry.held, c.coefficients.size());
        EXPECT_EQ(inventory.redefinitions().size(), c.redefined);
        const auto &stages = inventory.channel_epochs().front().response.stages;
        ASSERT_EQ(stages.size(), 2U);
        for (const StagePtr &stage : stages)
            EXPECT_EQ(stage->parts, std::vector<Part>(2, entry.parts[0]));
    }
}

} // namespace
} // namespace quarl
