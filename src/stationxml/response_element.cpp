#include "stationxml/response_element.h"

#include "platform/format.h"
#include "platform/text.h"
#include "stationxml/arranged.h"

#include <cmath>
#include <numbers>

namespace quarl
{

namespace
{

using Severity = CarryRemark::Severity;

void write_unit(xml::Writer &to, xml::Name name, const ShownUnit &unit)
{
    to.open(name);
    to.element("Name", std::string_view(unit.name));
    if (!unit.description.empty())
        to.element("Description", std::string_view(unit.description));
    to.close();
}

/// Attributes for an error in both directions; none for one of 0.
void write_error(xml::Writer &to, double error)
{
    if (error == 0.0)
        return;
    to.attribute("plusError", std::fabs(error));
    to.attribute("minusError", std::fabs(error));
}

double error_at(const std::vector<double> &errors, std::size_t i)
{
    return i < errors.size() ? errors[i] : 0.0;
}

void write_with_error(xml::Writer &to, xml::Name name, double value, double error)
{
    to.open(name);
    write_error(to, error);
    to.value(value);
    to.close();
}

void write_roots(xml::Writer &to, xml::Name name, const std::vector<std::complex<double>> &roots,
                 const std::vector<std::complex<double>> &errors)
{
    for (std::size_t i = 0; i < roots.size(); ++i) {
        const std::complex<double> error = i < errors.size() ? errors[i] : 0.0;
        to.open(name);
        to.attribute("number", static_cast<std::int64_t>(i));
        write_with_error(to, "Real", roots[i].real(), error.real());
        write_with_error(to, "Imaginary", roots[i].imag(), error.imag());
        to.close();
    }
}

/// Numbers with errors, counted from `first` on.
void write_list(xml::Writer &to, xml::Name name, const std::vector<double> &list,
                const std::vector<double> &errors, std::int64_t first)
{
    for (std::size_t i = 0; i < list.size(); ++i) {
        const std::int64_t number = static_cast<std::int64_t>(i) + first;
        if (const double error = error_at(errors, i); error == 0.0) {
            to.row(name, "number", number, list[i]);
        } else {
            to.open(name);
            to.attribute("number", number);
            write_error(to, error);
            to.value(list[i]);
            to.close();
        }
    }
}

/// Opens the element of a filter.
void begin_filter(xml::Writer &to, xml::Name name, const Filter &filter, const ShownUnit &input,
                  const ShownUnit &output)
{
    to.open(name);
    if (const auto title = trimmed(filter.name()); !title.empty())
        to.attribute("name", title);
    write_unit(to, "InputUnits", input);
    write_unit(to, "OutputUnits", output);
}

double within_turn(double degrees)
{
    return degrees >= -360.0 && degrees <= 360.0 ? degrees : std::fmod(degrees, 360.0);
}

/// Writes the element of one filter, by its shape.
struct FilterWriter {
    xml::Writer &to;
    const Filter &filter;
    const ShownUnit &input;
    const ShownUnit &output;

    void operator()(const PolesZeros &shape) const
    {
        begin_filter(to, "PolesZeros", filter, input, output);
        to.element("PzTransferFunctionType",
                   std::string_view(shape.type == 'A'   ? "LAPLACE (RADIANS/SECOND)"
                                    : shape.type == 'B' ? "LAPLACE (HERTZ)"
                                                        : "DIGITAL (Z-TRANSFORM)"));
        to.element("NormalizationFactor", shape.factor);
        to.element("NormalizationFrequency", shape.frequency);
        write_roots(to, "Zero", shape.zeros, shape.zero_errors);
        write_roots(to, "Pole", shape.poles, shape.pole_errors);
        to.close();
    }
    void operator()(const Coefficients &shape) const
    {
        begin_filter(to, "Coefficients", filter, input, output);
        to.element("CfTransferFunctionType",
                   std::string_view(shape.type == 'A'   ? "ANALOG (RADIANS/SECOND)"
                                    : shape.type == 'B' ? "ANALOG (HERTZ)"
                                                        : "DIGITAL"));
        write_list(to, "Numerator", shape.numerators, shape.numerator_errors, 1);
        write_list(to, "Denominator", shape.denominators, shape.denominator_errors, 1);
        to.close();
    }
    void operator()(const ResponseList &shape) const
    {
        begin_filter(to, "ResponseList", filter, input, output);
        for (const ResponseList::Entry &entry : shape.entries) {
            to.open("ResponseListElement");
            to.element("Frequency", entry.frequency);
            write_with_error(to, "Amplitude", entry.amplitude, entry.amplitude_error);
            write_with_error(to, "Phase", within_turn(entry.phase), entry.phase_error);
            to.close();
        }
        to.close();
    }
    void operator()(const GenericResponse & /*shape*/) const {} // has no element
    void operator()(const Fir &shape) const
    {
        begin_filter(to, "FIR", filter, input, output);
        to.element("Symmetry", std::string_view(shape.symmetry == 'B'   ? "ODD"
                                                : shape.symmetry == 'C' ? "EVEN"
                                                                        : "NONE"));
        for (std::size_t i = 0; i < shape.coefficients.size(); ++i)
            to.row("NumeratorCoefficient", "i", static_cast<std::int64_t>(i) + 1,
                   shape.coefficients[i]);
        to.close();
    }
    void operator()(const Polynomial &shape) const { write_polynomial(shape, "Polynomial"); }

    void write_polynomial(const Polynomial &shape, xml::Name name) const
    {
        const double hertz = shape.frequency_unit == 'A' ? 2 * std::numbers::pi : 1.0;
        begin_filter(to, name, filter, input, output);
        to.element("ApproximationType", std::string_view("MACLAURIN"));
        to.element("FrequencyLowerBound", shape.lower_frequency / hertz);
        to.element("FrequencyUpperBound", shape.upper_frequency / hertz);
        to.element("ApproximationLowerBound", shape.lower_bound);
        to.element("ApproximationUpperBound", shape.upper_bound);
        to.element("MaximumError", shape.maximum_error);
        write_list(to, "Coefficient", shape.coefficients, shape.coefficient_errors, 0);
        to.close();
    }
};

void write_gain(xml::Writer &to, const Gain &gain)
{
    to.element("Value", gain.value);
    to.element("Frequency", gain.frequency);
}

void write_decimation(xml::Writer &to, const Decimation &decimation)
{
    to.open("Decimation");
    to.element("InputSampleRate", decimation.input_rate);
    to.element("Factor", std::int64_t{decimation.factor});
    to.element("Offset", std::int64_t{decimation.offset});
    to.element("Delay", decimation.delay);
    to.element("Correction", decimation.correction);
    to.close();
}

std::string rest_of(const ArrangedStage &stage)
{
    std::string rest;
    if (stage.decimation)
        rest += formatted<"decimation: input rate %.9g, factor %d, offset %d, delay %.9g, "
                          "correction %.9g">(stage.decimation->input_rate, stage.decimation->factor,
                                             stage.decimation->offset, stage.decimation->delay,
                                             stage.decimation->correction);
    if (stage.has_gain)
        rest += formatted<"%sgain %.9g at %.9g Hz">(rest.empty() ? "" : "; ", stage.gain.value,
                                                    stage.gain.frequency);
    return rest;
}

void write_stage(const ElementWriting &writing, const ArrangedStage &stage, const Teller &tell)
{
    xml::Writer &to = writing.to;
    to.open("Stage");
    to.attribute("number", std::int64_t{stage.number});
    if (stage.filter)
        std::visit(FilterWriter{to, *stage.filter, stage.input, stage.output},
                   stage.filter->shape());
    const bool alone = stage.filter && std::holds_alternative<Polynomial>(stage.filter->shape());
    if (!alone) {
        if (stage.decimation)
            write_decimation(to, *stage.decimation);
        to.open("StageGain");
        write_gain(to, stage.gain);
        to.close();
    } else if (const std::string rest = rest_of(stage); !rest.empty()) {
        tell(Severity::note, "no-place",
             formatted<"stage %d: beside its polynomial there is no place for its %s">(stage.number,
                                                                                       rest));
        if (writing.options.keep_all)
            to.comment(rest);
    }
    to.close();
}

void write_whole(const ElementWriting &writing, const Arranged &response, const Teller &tell)
{
    xml::Writer &to = writing.to;
    if (response.sensitivity && !response.polynomial) {
        to.open("InstrumentSensitivity");
        write_gain(to, *response.sensitivity);
        write_unit(to, "InputUnits", response.input);
        write_unit(to, "OutputUnits", response.output);
        to.close();
        return;
    }
    if (response.sensitivity)
        tell(Severity::note, "no-place",
             formatted<"beside the polynomial of the channel there is no place for its "
                       "sensitivity of %.9g">(response.sensitivity->value));
    const FilterPtr polynomial =
        response.polynomial ? response.polynomial : whole_polynomial(response.stages);
    if (polynomial)
        FilterWriter{to, *polynomial, response.input, response.output}.write_polynomial(
            std::get<Polynomial>(polynomial->shape()), "InstrumentPolynomial");
}

void tell_left(const Arranged &response, const Teller &tell)
{
    for (const NotArranged &left : response.left) {
        const bool all = left.severity == Severity::error;
        tell(left.severity, all ? "response-lost" : "response-part",
             left.text + (all ? ": the stages of the response are left out" : ""));
    }
}

/// Corners of generic responses, which have no element.
void keep_generic(xml::Writer &to, const Response &response)
{
    for (const StagePtr &stage : response.stages)
        for (const Part &part : stage->parts) {
            const auto *filter = std::get_if<FilterPtr>(&part);
            const auto *generic =
                filter ? std::get_if<GenericResponse>(&(*filter)->shape()) : nullptr;
            for (std::size_t i = 0; generic && i < generic->corners.size(); ++i)
                to.comment(formatted<"stage %d: generic response, corner at %.9g Hz, slope %.9g "
                                     "dB/decade">(stage->number, generic->corners[i].frequency,
                                                  generic->corners[i].slope));
        }
}

} // namespace

void write_response(const ElementWriting &writing, const CarriedChannel &channel,
                    const Teller &tell)
{
    const Arranged response = arranged(*channel.inventory, *channel.epoch);
    tell_left(response, tell);
    writing.to.open("Response");
    write_whole(writing, response, tell);
    if (writing.options.level == StationXmlLevel::response) {
        for (const ArrangedStage &stage : response.stages)
            write_stage(writing, stage, tell);
        if (writing.options.keep_all)
            keep_generic(writing.to, channel.epoch->response);
    }
    writing.to.close();
}

} // namespace quarl
