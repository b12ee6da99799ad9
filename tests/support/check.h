// Volumes to check, and what is found in them.
#pragma once

#include "compose/blockette_text.h"
#include "compose/volume.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

/// The parts of a sound full volume: one station, one channel with a response, its data. A test
/// changes what it needs.
struct SoundVolume {
    std::string begin = "2024,001";
    std::string end = "2024,002";
    double version = 2.4;
    std::vector<StationEntry> station_index = {{"QRL", 3}};
    std::vector<SpanEntry> span_index = {{"2024,001", "2024,002", 4}};
    /// Blockettes of the dictionaries.
    std::vector<std::pair<int, std::string>> dictionaries;
    std::vector<B050> stations = {{}};
    std::vector<B052> channels;                        ///< of the last station
    std::vector<std::pair<int, std::string>> response; ///< of each channel
    std::vector<B074> series;
    std::vector<DataRecord> data;
    /// Changes the volume when all of it stands.
    std::function<std::string(std::string)> edit;

    SoundVolume();
    [[nodiscard]] std::string bytes() const;
};

/// The names of the rules that find something in a volume of these bytes, each once, sorted and
/// joined by blanks.
std::string rules_broken(const std::string &bytes);
/// The findings as quarl-check prints them, the volume being "V".
std::string findings(const std::string &bytes);
/// The fingerprints of what is found, in order of records.
std::vector<std::string> fingerprints(const std::string &bytes);

/// A rule with what makes a sound volume break it and no other, and what nearly does.
struct CheckCase {
    using Edit = void (*)(SoundVolume &);
    const char *rule;
    Edit breaks;
    Edit near_miss;
};

/// Expects that each does so.
void expect_alone(const CheckCase &each);

/// The cases about responses.
std::span<const CheckCase> response_cases();
