// RESP texts read by lines, each named by blockette and field.
#include "read_back.h"

#include <cstdlib>
#include <optional>
#include <sstream>
#include <utility>

using namespace quarl; // NOLINT: its parts are built here

namespace
{

/// The lines of one blockette: field numbers and what stands behind their names.
struct Lines {
    int type = 0;
    std::multimap<std::string, std::string> fields;

    [[nodiscard]] std::string text(const char *field) const
    {
        const auto found = fields.find(field);
        return found == fields.end() ? "" : found->second;
    }
    [[nodiscard]] double number(const char *field) const
    {
        return std::strtod(text(field).c_str(), nullptr);
    }
    /// Column `column` of a list, behind the index.
    [[nodiscard]] std::vector<double> column(const char *field, int column) const
    {
        std::vector<double> all;
        const auto [begin, end] = fields.equal_range(field);
        for (auto line = begin; line != end; ++line) {
            std::istringstream words(line->second);
            std::string word;
            for (int i = 0; i < column + 2; ++i)
                words >> word;
            all.push_back(std::strtod(word.c_str(), nullptr));
        }
        return all;
    }
};

std::vector<std::complex<double>> roots(const Lines &of, const char *field)
{
    const auto real = of.column(field, 0);
    const auto imaginary = of.column(field, 1);
    std::vector<std::complex<double>> all;
    for (std::size_t i = 0; i < real.size(); ++i)
        all.emplace_back(real[i], imaginary[i]);
    return all;
}

FilterShape shape_of(const Lines &of)
{
    if (of.type == 53)
        return PolesZeros{of.text("03")[0], of.number("07"), of.number("08"), roots(of, "10-13"),
                          roots(of, "15-18")};
    if (of.type == 54)
        return Coefficients{of.text("03")[0], of.column("08-09", 0), of.column("11-12", 0)};
    if (of.type == 61)
        return Fir{of.text("05")[0], of.column("09", 0)};
    if (of.type == 55) {
        ResponseList list;
        const auto frequency = of.column("07-11", 0);
        const auto amplitude = of.column("07-11", 1);
        const auto phase = of.column("07-11", 3);
        for (std::size_t i = 0; i < frequency.size(); ++i)
            list.entries.push_back({frequency[i], amplitude[i], phase[i]});
        return list;
    }
    Polynomial shape;
    shape.frequency_unit = of.text("08")[0];
    shape.coefficients = of.column("15-16", 0);
    return shape;
}

void take(const Lines &of, ResponseBuilder *to)
{
    if (of.type < 53)
        return;
    const bool typed = of.type == 53 || of.type == 54 || of.type == 62;
    const int stage = static_cast<int>(of.number(typed ? "04" : "03"));
    if (of.type == 58)
        to->add(stage, Part(Gain{of.number("04"), of.number("05")}));
    else if (of.type == 57)
        to->add(stage, Part(Decimation{of.number("04"), static_cast<int>(of.number("05")),
                                       static_cast<int>(of.number("06")), of.number("07"),
                                       of.number("08")}));
    else
        to->add(stage, Filter(shape_of(of)));
}

std::string code(const std::string &text) { return text == "??" ? "" : text; }

} // namespace

std::vector<ReadEpoch> read_resp(const std::string &text)
{
    static ResponsePool pool;
    ResponseBuilder builder(pool);
    std::vector<ReadEpoch> epochs;
    Lines lines;
    std::map<std::string, std::string> head; ///< by blockette and field
    const auto end_blockette = [&] { take(std::exchange(lines, {}), &builder); };
    const auto end_epoch = [&] {
        end_blockette();
        if (!head.empty())
            epochs.push_back({code(head["050F16"]) + '.' + head["050F03"] + '.' +
                                  code(head["052F03"]) + '.' + head["052F04"],
                              head["052F22"], builder.take(0)});
        head.clear();
    };
    std::istringstream all(text);
    for (std::string line; std::getline(all, line);) {
        if (line[0] != 'B')
            continue;
        const std::string field = line.substr(1, line.find(' ') - 1);
        const int type = std::atoi(field.c_str());
        const bool listed = field.find('-') != field.npos || field == "061F09";
        const std::size_t colon = line.find(':');
        const std::size_t at = line.find_first_not_of(' ', listed ? line.find(' ') : colon + 1);
        const std::string value = at == line.npos ? "" : line.substr(at);
        if (field == "050F03")
            end_epoch();
        if (type != lines.type || field.ends_with("F03"))
            end_blockette();
        lines.type = type;
        lines.fields.emplace(field.substr(4), value);
        if (type < 53)
            head[field] = value;
    }
    end_epoch();
    return epochs;
}
