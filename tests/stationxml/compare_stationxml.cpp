// What was written, read back and evaluated: equal to 1e-12 at 100 frequencies for each channel
// epoch.
//
//     compare_stationxml FOLDER    exits with 77 when the folder is not there
#include "support/check.h" // in front of what uses the whole namespace

#include "compose/files.h"
#include "read_back.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <quarl/inventory.h>
#include <quarl/response.h>
#include <quarl/stationxml.h>
#include <quarl/volume.h>
#include <sstream>
#include <unistd.h>

using namespace quarl; // NOLINT: the test is about it

namespace
{

namespace fs = std::filesystem;

struct Totals {
    int epochs = 0;
    int evaluated = 0;
    int faults = 0;
    double worst = 0.0;
};

std::vector<double> frequencies(double rate)
{
    constexpr int Count = 100;
    std::vector<double> all;
    const double top = rate > 0 ? rate / 2 : 1.0;
    for (int i = 1; i <= Count; ++i)
        all.push_back(top * std::pow(10.0, -5.0 * (Count - i) / Count) * 0.99);
    return all;
}

void fault(Totals *totals, const std::string &what, const std::string &why)
{
    std::cout << what << ": " << why << '\n';
    ++totals->faults;
}

/// Compares what is read back of a response with it.
void compare(const std::string &what, const Response &written, const Response &read, Totals *totals)
{
    const auto grid = frequencies(written.sample_rate);
    const Evaluation expected = evaluate(written, grid);
    const Evaluation found = evaluate(read, grid);
    if (expected.refused())
        return;
    ++totals->evaluated;
    if (found.refused())
        return fault(totals, what, "refused: " + found.error);
    for (std::size_t i = 0; i < grid.size(); ++i) {
        const bool none = std::isnan(expected.values[i].real());
        if (none != std::isnan(found.values[i].real()))
            return fault(totals, what, "a value where there is none");
        const double size = std::abs(expected.values[i]);
        const double off =
            none || size == 0.0 ? 0.0 : std::abs(found.values[i] - expected.values[i]) / size;
        totals->worst = std::max(totals->worst, off);
        if (!(off <= 1e-12))
            return fault(totals, what, "off by " + std::to_string(off));
    }
    if (!(std::isnan(expected.sensitivity) && std::isnan(found.sensitivity)) &&
        found.sensitivity != expected.sensitivity)
        fault(totals, what, "another sensitivity");
}

void compare_epoch(const Inventory &inventory, const ChannelEpoch &epoch, const ReadEpoch &read,
                   Totals *totals)
{
    const ChannelCode &code = inventory.channel_of(epoch).code;
    std::string dotted(code.network());
    for (const auto part : {code.station(), code.location(), code.channel()})
        dotted.append(1, '.').append(part);
    ++totals->epochs;
    if (read.code != dotted && !code.network().empty())
        fault(totals, dotted, "read back as " + read.code);
    compare(dotted + " " + read.start, epoch.response, read.response, totals);
    std::ostringstream resp;
    write_resp(resp, inventory, epoch);
    const auto again = read_resp(resp.str());
    if (again.size() != 1 || again[0].code != dotted)
        return fault(totals, dotted, "another RESP text");
    compare(dotted + " RESP", epoch.response, again[0].response, totals);
}

void compare_volume(const std::string &path, Totals *totals)
{
    Inventory inventory;
    VolumeOptions options;
    options.message = [](const Message &) {};
    Volume volume(path, options);
    for (const Item &item : volume)
        if (item.type() != Data_Record)
            inventory.add(item);
    std::ostringstream document;
    if (!write_stationxml(document, inventory))
        return;
    const auto read = read_xml(document.str());
    if (read.size() != inventory.channel_epochs().size())
        return fault(totals, path, "not all epochs are there");
    for (std::size_t i = 0; i < read.size(); ++i)
        compare_epoch(inventory, inventory.channel_epochs()[i], read[i], totals);
}

/// Kinds of responses that no real volume has, or none that can be relied on.
std::vector<SoundVolume> composed()
{
    std::vector<SoundVolume> all(6);
    const auto gains = [](SoundVolume &v) {
        v.response.push_back({58, b058(1, 7, 1)});
        v.response.push_back({58, b058(0, 7, 1)});
    };
    all[1].response = {{55, b055(1, 1, 3, {{.001, 2, 0, 370, 0}, {1, 3, 0, -400, 0}})},
                       {55, b055(1, 1, 3, {{10, 5, 0, 90, 0}})}};
    gains(all[1]);
    all[2].dictionaries.push_back(
        {41, std::string("0001Half~B0030030002+2.5000000E-01+5.0000000E-01")});
    all[2].response[5] = {60, "0103010001"};
    all[3].response[2].second = b054({.stage = 2,
                                      .input_units = 2,
                                      .output_units = 3,
                                      .numerators = {{.1, 0}, {.3, 0}, {.7, .1}},
                                      .denominators = {{1, 0}, {.25, 0}}});
    std::string polynomial = b062({.output_units = 3, .coefficients = {{1, 0}, {4, .5}}});
    all[4].response = {{62, polynomial.replace(71, 4, "002")}, {58, b058(2, 2, 0)}};
    // Stages of two filters, and out of order.
    all[5].response.insert(all[5].response.begin(), {53, b053({.type = 'B',
                                                               .stage = 4,
                                                               .input_units = 3,
                                                               .output_units = 3,
                                                               .factor = 2,
                                                               .poles = {{-30, 1}, {-30, -1}}})});
    all[5].response.push_back({58, b058(4, 3, 1)});
    return all;
}

} // namespace

int main(int argc, char *argv[])
{
    Totals totals;
    const fs::path made = fs::temp_directory_path() / ("composed-" + std::to_string(getpid()));
    for (const SoundVolume &volume : composed()) {
        write_file(made, volume.bytes());
        compare_volume(made, &totals);
        fs::remove(made);
    }
    if (totals.evaluated != 2 * totals.epochs)
        fault(&totals, "composed volumes", "not all are evaluated");
    const bool real = argc > 1 && fs::is_directory(argv[1]);
    if (real)
        for (const fs::directory_entry &entry : fs::directory_iterator(argv[1]))
            if (entry.path().filename().string().find(".seed") != std::string::npos)
                compare_volume(entry.path(), &totals);
    std::cout << totals.epochs << " epochs, " << totals.evaluated
              << " responses read back and evaluated, at most " << totals.worst << " off\n";
    constexpr int Least = 60;
    if (totals.faults > 0 || (real && totals.epochs < Least))
        return 1;
    return real ? 0 : 77;
}
