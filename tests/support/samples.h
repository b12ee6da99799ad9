// Decoded samples as text, and data records to decode.
#pragma once

#include "blockette/data_header.h"
#include "compose/volume.h"

#include <quarl/samples.h>
#include <string>
#include <vector>

/// Values of any kind as doubles, which hold them all; characters as their codes.
inline std::vector<double> values_of(const quarl::Samples &samples)
{
    return std::visit(
        [](const auto &some) {
            if constexpr (requires { some.begin(); })
                return std::vector<double>(some.begin(), some.end());
            else
                return std::vector<double>();
        },
        samples.values);
}

/// "fault: text" of each problem, one a line.
inline std::string problems_of(const quarl::Samples &samples)
{
    std::string all;
    for (const quarl::SampleProblem &problem : samples.problems)
        all += std::string(name_of(problem.fault)) + ": " + problem.text + "\n";
    return all;
}

/// A data record in memory of exactly its length, with its header as a reading leaves it.
struct RecordInMemory {
    explicit RecordInMemory(const DataRecord &record)
    {
        const std::string text = data_record_bytes(record, 1);
        bytes.assign(text.begin(), text.end());
        quarl::parse_dh(&header, text.substr(8));
        if (record.b1000) {
            header.encoding = record.b1000->encoding;
            header.word_order = record.b1000->word_order;
        }
        header.length = static_cast<int>(bytes.size());
        header.raw = bytes.data();
    }

    std::vector<char> bytes;
    quarl::blk_dh_t header;
};
