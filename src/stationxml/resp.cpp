// Responses as the text form that evaluators read: a line per field, named by blockette and field.
#include "platform/format.h"
#include "platform/text.h"
#include "platform/xml_text.h"
#include "stationxml/arranged.h"

#include <algorithm>
#include <cmath>
#include <quarl/stationxml.h>
#include <quarl/time.h>
#include <variant>

namespace quarl
{

namespace
{

/// Texts of volumes stay on their line.
std::string on_line(std::string_view text)
{
    std::string line(trimmed(text));
    std::replace_if(
        line.begin(), line.end(), [](char c) { return (c >= '\0' && c < ' ') || c == '\x7F'; },
        ' ');
    return line;
}

std::string number(double value)
{
    std::string text;
    xml::append_number(&text, value);
    return text;
}

/// A SEED time; `open` stands for none.
std::string time_or(double seconds, const char *open)
{
    if (seconds == Always || seconds == Forever)
        return open;
    const auto time = time_of(std::round(seconds * 10000) / 10000); // what volumes can tell
    return time ? seed_text(*time) : open;
}

class RespWriter
{
public:
    explicit RespWriter(std::ostream &to) : to_(to) {}

    void field(int type, const char *fields, const char *what, std::string_view value)
    {
        to_ << formatted<"B%03dF%-7s%-40s%s\n">(type, fields, what, value);
    }
    void field(int type, const char *fields, const char *what, double value)
    {
        field(type, fields, what, number(value));
    }
    void field(int type, const char *fields, const char *what, int value)
    {
        field(type, fields, what, std::to_string(value));
    }
    /// An entry of a list.
    template <class... Numbers>
    void entry(int type, const char *fields, std::size_t i, Numbers... numbers)
    {
        std::string line = formatted<"B%03dF%-7s%5lu">(type, fields, i);
        ((line += "  " + number(numbers)), ...);
        to_ << line << '\n';
    }
    void title(std::string_view text) { to_ << "#\n#  " << text << "\n#\n"; }
    void unit(int type, const char *fields, const char *what, const ShownUnit &unit)
    {
        std::string text = on_line(unit.name);
        if (const std::string more = on_line(unit.description); !more.empty())
            text += " - " + more;
        field(type, fields, what, text);
    }
    void head(const ChannelCode &code, const ChannelEpoch &epoch);
    void stage(const ArrangedStage &stage);
    void gain(int stage, const Gain &gain);

private:
    friend struct RespFilter;
    void decimation(int stage, const Decimation &decimation);

    std::ostream &to_;
};

constexpr auto Stage_Name = "Stage sequence number:";
constexpr auto Input_Name = "Response in units lookup:";
constexpr auto Output_Name = "Response out units lookup:";

/// Writes a filter, by its shape.
struct RespFilter {
    RespWriter &to;
    const ArrangedStage &stage;

    void operator()(const PolesZeros &shape) const;
    void operator()(const Coefficients &shape) const;
    void operator()(const ResponseList &shape) const;
    void operator()(const GenericResponse & /*shape*/) const {} // evaluators pass it over
    void operator()(const Fir &shape) const;
    void operator()(const Polynomial &shape) const;
};

void write_roots(RespWriter *to, const char *fields, const std::vector<std::complex<double>> &roots,
                 const std::vector<std::complex<double>> &errors)
{
    for (std::size_t i = 0; i < roots.size(); ++i) {
        const std::complex<double> error = i < errors.size() ? errors[i] : 0.0;
        to->entry(53, fields, i, roots[i].real(), roots[i].imag(), error.real(), error.imag());
    }
}

void write_list(RespWriter *to, int type, const char *fields, const std::vector<double> &list,
                const std::vector<double> &errors)
{
    for (std::size_t i = 0; i < list.size(); ++i)
        to->entry(type, fields, i, list[i], i < errors.size() ? errors[i] : 0.0);
}

void RespFilter::operator()(const PolesZeros &shape) const
{
    to.title("Response (Poles & Zeros)");
    to.field(53, "03", "Transfer function type:",
             std::string_view(shape.type == 'A'   ? "A [Laplace Transform (Rad/sec)]"
                              : shape.type == 'B' ? "B [Analog (Hz)]"
                                                  : "D [Digital (Z-transform)]"));
    to.field(53, "04", Stage_Name, stage.number);
    to.unit(53, "05", Input_Name, stage.input);
    to.unit(53, "06", Output_Name, stage.output);
    to.field(53, "07", "A0 normalization factor:", shape.factor);
    to.field(53, "08", "Normalization frequency:", shape.frequency);
    to.field(53, "09", "Number of zeroes:", static_cast<int>(shape.zeros.size()));
    to.field(53, "14", "Number of poles:", static_cast<int>(shape.poles.size()));
    write_roots(&to, "10-13", shape.zeros, shape.zero_errors);
    write_roots(&to, "15-18", shape.poles, shape.pole_errors);
}

void RespFilter::operator()(const Coefficients &shape) const
{
    to.title("Response (Coefficients)");
    to.field(54, "03", "Transfer function type:", std::string_view(&shape.type, 1));
    to.field(54, "04", Stage_Name, stage.number);
    to.unit(54, "05", Input_Name, stage.input);
    to.unit(54, "06", Output_Name, stage.output);
    to.field(54, "07", "Number of numerators:", static_cast<int>(shape.numerators.size()));
    to.field(54, "10", "Number of denominators:", static_cast<int>(shape.denominators.size()));
    write_list(&to, 54, "08-09", shape.numerators, shape.numerator_errors);
    write_list(&to, 54, "11-12", shape.denominators, shape.denominator_errors);
}

void RespFilter::operator()(const ResponseList &shape) const
{
    to.title("Response List");
    to.field(55, "03", Stage_Name, stage.number);
    to.unit(55, "04", Input_Name, stage.input);
    to.unit(55, "05", Output_Name, stage.output);
    to.field(55, "06", "Number of responses:", static_cast<int>(shape.entries.size()));
    for (std::size_t i = 0; i < shape.entries.size(); ++i) {
        const ResponseList::Entry &entry = shape.entries[i];
        to.entry(55, "07-11", i, entry.frequency, entry.amplitude, entry.amplitude_error,
                 entry.phase, entry.phase_error);
    }
}

void RespFilter::operator()(const Fir &shape) const
{
    to.title("FIR Response");
    to.field(61, "03", Stage_Name, stage.number);
    to.field(61, "04", "Response Name:", on_line(stage.filter->name()));
    to.field(61, "05", "Symmetry type:", std::string_view(&shape.symmetry, 1));
    to.unit(61, "06", Input_Name, stage.input);
    to.unit(61, "07", Output_Name, stage.output);
    to.field(61, "08", "Number of numerators:", static_cast<int>(shape.coefficients.size()));
    for (std::size_t i = 0; i < shape.coefficients.size(); ++i)
        to.entry(61, "09", i, shape.coefficients[i]);
}

void RespFilter::operator()(const Polynomial &shape) const
{
    to.title("Response (Polynomial)");
    to.field(62, "03", "Transfer function type:", std::string_view("P [Polynomial]"));
    to.field(62, "04", Stage_Name, stage.number);
    to.unit(62, "05", Input_Name, stage.input);
    to.unit(62, "06", Output_Name, stage.output);
    to.field(62, "07", "Polynomial Approximation Type:", std::string_view("M [Maclaurin]"));
    to.field(62, "08", "Valid Frequency Units:",
             std::string_view(shape.frequency_unit == 'A' ? "A [Rad/sec]" : "B [Hz]"));
    to.field(62, "09", "Lower Valid Frequency Bound:", shape.lower_frequency);
    to.field(62, "10", "Upper Valid Frequency Bound:", shape.upper_frequency);
    to.field(62, "11", "Lower Bound of Approximation:", shape.lower_bound);
    to.field(62, "12", "Upper Bound of Approximation:", shape.upper_bound);
    to.field(62, "13", "Maximum Absolute Error:", shape.maximum_error);
    to.field(62, "14", "Number of coefficients:", static_cast<int>(shape.coefficients.size()));
    write_list(&to, 62, "15-16", shape.coefficients, shape.coefficient_errors);
}

void RespWriter::head(const ChannelCode &code, const ChannelEpoch &epoch)
{
    const auto or_marks = [](std::string_view text) {
        return text.empty() ? std::string("??") : on_line(text);
    };
    title("Channel response");
    field(50, "03", "Station:", on_line(code.station()));
    field(50, "16", "Network:", or_marks(code.network()));
    field(52, "03", "Location:", or_marks(code.location()));
    field(52, "04", "Channel:", on_line(code.channel()));
    field(52, "22", "Start date:", time_or(epoch.start, "No Starting Time"));
    field(52, "23", "End date:", time_or(epoch.end, "No Ending Time"));
}

void RespWriter::decimation(int stage, const Decimation &decimation)
{
    title("Decimation");
    field(57, "03", Stage_Name, stage);
    field(57, "04", "Input sample rate:", decimation.input_rate);
    field(57, "05", "Decimation factor:", decimation.factor);
    field(57, "06", "Decimation offset:", decimation.offset);
    field(57, "07", "Estimated delay (seconds):", decimation.delay);
    field(57, "08", "Correction applied (seconds):", decimation.correction);
}

void RespWriter::gain(int stage, const Gain &gain)
{
    title("Channel Sensitivity/Gain");
    field(58, "03", Stage_Name, stage);
    field(58, "04", stage == 0 ? "Sensitivity:" : "Gain:", gain.value);
    field(58, "05",
          stage == 0 ? "Frequency of sensitivity:" : "Frequency of gain:", gain.frequency);
    field(58, "06", "Number of calibrations:", 0);
}

void RespWriter::stage(const ArrangedStage &stage)
{
    if (stage.filter)
        std::visit(RespFilter{*this, stage}, stage.filter->shape());
    if (stage.decimation)
        decimation(stage.number, *stage.decimation);
    if (!stage.filter || !std::holds_alternative<Polynomial>(stage.filter->shape()) ||
        stage.has_gain)
        gain(stage.number, stage.gain);
}

} // namespace

void write_resp(std::ostream &to, const Inventory &inventory, const ChannelEpoch &epoch)
{
    const Arranged response = arranged(inventory, epoch);
    RespWriter writer(to);
    writer.head(inventory.channel_of(epoch).code, epoch);
    for (const ArrangedStage &stage : response.stages)
        writer.stage(stage);
    if (response.polynomial)
        writer.stage({0, response.polynomial, response.input, response.output, {}, {}, false});
    if (response.sensitivity)
        writer.gain(0, *response.sensitivity);
}

std::string resp_name(const ChannelCode &code)
{
    std::string name = "RESP.";
    for (const std::string_view part :
         {code.network(), code.station(), code.location(), code.channel()}) {
        for (const char c : part)
            name += is_alnum(c) || c == '-' ? c : '_';
        name += '.';
    }
    name.pop_back();
    return name;
}

} // namespace quarl
