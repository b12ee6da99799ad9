// Writes the seeds of the fuzz targets: make_corpus GOLDEN_FOLDER CORPUS_FOLDER
#include "compose/blockette_text.h"
#include "compose/files.h"
#include "compose/sample.h"
#include "compose/samples.h"
#include "support/compressed.h"
#include "support/recipe.h"

#include <cstdio>
#include <filesystem>
#include <iterator>

namespace fs = std::filesystem;

namespace
{

/// One seed; `choice` is the byte in front of it that some targets read as options.
void put(const fs::path &path, std::string_view bytes, int choice = -1)
{
    fs::create_directories(path.parent_path());
    std::string all(choice < 0 ? 0 : 1, static_cast<char>(choice));
    write_file(path, all += bytes);
}

/// The golden cases' volumes, as far as they are small, and the sample's station headers.
void volumes(const fs::path &golden, const fs::path &folder)
{
    constexpr std::size_t Largest = 6144;
    int choice = 0;
    for (const auto &entry : fs::directory_iterator(golden)) {
        const fs::path recipe = entry.path() / "volume.txt";
        if (!fs::exists(recipe))
            continue;
        std::string volume = parse_recipe(read_file(recipe)).volume();
        if (volume.size() <= Largest)
            put(folder / entry.path().filename(), volume, choice++ % 16);
    }
    const std::string sample = sample_volume();
    put(folder / "sample", sample.substr(0, 16384), 0);
    put(folder / "data", sample.substr(sample.size() - 4096), 1);
}

/// Records without Blockette 1000 whose formats the dictionary names: with room for it and without.
void records_to_complete(const fs::path &folder)
{
    const std::pair<const char *, int> formats[] = {{"32-Bit Integer Format", 48},
                                                    {"Steim2 Integer Compression Format", 64},
                                                    {"IEEE single precision real", 56},
                                                    {"USNSN Integer Compression", 48}};
    for (const auto &[name, begin] : formats) {
        VolumeBuilder volume(512);
        volume.header('A').blockette(30, b030(name, 1, 0, {}));
        volume.header('S').blockette(50, b050({})).blockette(52, b052({.exponent = 9}));
        volume.data({.begin_data = begin, .payload = std::string(400, 'a')});
        volume.data({.little = true, .timing_quality = 50, .begin_data = 64});
        put(folder / std::to_string(begin).append(1, name[0]), volume.volume(), 0);
    }
}

/// Every blockette of the sample and some of the extremes, in front of each the row of its type.
void blockettes(const fs::path &folder)
{
    const std::string many = "9999" + std::string(3000, '1');
    const std::string texts[] = {
        b010(2.4, 12, "2020,001,00:00:00.0000~", "", "2020", "Org", "Label"),
        b011({{"QRL1", 3}, {"QRL2", 4}}),
        b012({{"2020,001", "2020,002", 5}, {"", "", 0}}),
        b030("Steim2", 1, 50, {"F1 P4 W4 D C2 R1 P8 W4 D C2", "P0 W4 N15 S2,0,1"}),
        b031(1, 'S', "Clock locked", 0),
        b032(1, "Bulletin", "2024", "Publisher"),
        b033(1, "Network"),
        b034(1, "M/S", "Velocity"),
        b050({.lat = -89.5, .lon = 179.5, .elev = 12}),
        b051("2021,152", "", 1, 0),
        b052({.subchannel = 2, .comment = "in the vault"}),
        b053({.zeros = {{0, 0}, {1e-30, -1}}, .poles = {{-0.03, 0.03, 1, 1}}}),
        b054({.numerators = {{1, 0}, {2, 0.5}}, .denominators = {{1e10, 0}}}),
        b055(2, 1, 2, {{0.01, 1, 0, 0, 0}, {0.1, 0.998, 0.001, -1.5, 0.1}}),
        b057(2, 80, 4, 0, 0.1, 0.1),
        b058(0, 6.29e8, 1),
        b059("2023,100", "2023,101", 1, 0),
        b061({.name = "FIR", .coefficients = {-0.0021, 0.0148}}),
        b062({.coefficients = {{80000, 4}, {0.125, 0.0005}}}),
        b070('E', "2020,001", "2020,002"),
        b071({.time = "2024,060,23:59:41.25", .magnitudes = {{3.1, "ML", 1}}}),
        b072({.time = "2024,061", .amplitude = 42, .period = 0.25, .snr = 12.5}),
        b073({{.time = "2024,061", .seq = 7}, {.time = "2024,062", .seq = 8}}),
        b074({.first = {"2024,061", 1, 1}, .last = {"2024,062", 2, 2}, .repeats = {{"2024", 1}}})};
    for (int row = 0; row < std::ssize(texts); ++row) {
        const std::string number = std::to_string(row);
        put(folder / number, "0000099" + texts[row], row);
        std::string extreme = "0009999" + texts[row].substr(0, 9);
        extreme += many;
        put(folder / (number + "-long"), extreme, row);
    }
}

void data_records(const fs::path &folder)
{
    const DataOnly steim = {11, 1, 9};
    const DataRecord records[] = {
        {.length = 128, .b1000 = steim},
        {.length = 128, .little = true, .b1000 = steim, .timing_quality = 90, .actual_rate = 20},
        {.time_correction = -70000, .length = 128, .b1000 = DataOnly{3, 0, 30}},
        {.length = 128, .b1000 = steim, .num_blockettes = 200, .first_blockette = 127},
        {.station = "\1 Q", .rate_factor = -32768, .rate_multiplier = 0, .length = 128},
        {.length = 256,
         .little = true,
         .blockettes = {{405, "u2:1/u2:2"},
                        {200, "f4:1/f4:2/f4:3/u1:1/z11/a24:Name"},
                        {2000, "u2:20/u2:18/u4:1/z2/u1:1/a5:ab~cd"},
                        {395, "t:2024,061,00:00:00.0001/z2"}}}};
    for (int i = 0; i < std::ssize(records); ++i)
        put(folder / std::to_string(i), data_record_bytes(records[i], i));
}

/// Frames of both compressions with differences of all widths, and words of every other encoding;
/// in front of each its encoding, byte order and count.
void samples(const fs::path &folder)
{
    std::vector<std::int32_t> values;
    values.reserve(280);
    for (int i = 0; i < 280; ++i)
        values.push_back((i % 2 == 0 ? 1 : -1) << i / 10);
    for (const int encoding : {0, 1, 2, 3, 4, 5, 10, 11, 12, 13, 14, 15, 16, 30, 32, 255}) {
        const bool little = encoding % 4 == 0;
        std::string bytes = packed({values.begin(), values.begin() + 20}, 4, little);
        std::size_t count = 20;
        if (encoding == 10 || encoding == 11) {
            const SteimFrames frames =
                steim_frames(values, {.version = encoding - 9, .little = little, .frames = 20});
            bytes = frames.bytes;
            count = frames.samples;
        }
        const std::string head = {static_cast<char>(encoding), static_cast<char>(little ? 1 : 0),
                                  static_cast<char>(count >> 8), static_cast<char>(count)};
        put(folder / std::to_string(encoding), head + bytes);
    }
}

void parameter_files(const fs::path &folder)
{
    put(folder / "aliases", "[data_type_aliases]\n\"STEIM 2\" = 'Steim2'\na.b = \"\\u0041\\n\"\n");
    put(folder / "values", "a = 1\n[b]\nc = [1, 2.5e3, {d = true}]\ne = 1979-05-27T07:32:00Z\n");
    put(folder / "texts", "[t]\nx = '''a\n''b'''\ny = \"\"\"\\\n  z\"\"\"\n[[u]]\n");
}

void compressed_files(const fs::path &folder)
{
    const std::string bytes = sample_volume().substr(0, 3000);
    for (const char *filter : Filters)
        put(folder / filter, compressed(bytes, filter), 0);
    put(folder / "two", compressed("one", "gzip") + compressed("two", "gzip") + "trailing", 129);
    put(folder / "bomb", compressed(std::string(8U << 20, ' '), "xz"), 0);
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 3) {
        std::fputs("usage: make_corpus GOLDEN_FOLDER CORPUS_FOLDER\n", stderr);
        return 2;
    }
    const fs::path corpus = argv[2];
    volumes(argv[1], corpus / "whole_run");
    blockettes(corpus / "blockette");
    data_records(corpus / "data_record");
    samples(corpus / "samples");
    records_to_complete(corpus / "mseed");
    parameter_files(corpus / "parameter_file");
    compressed_files(corpus / "compressed");
    return 0;
}
