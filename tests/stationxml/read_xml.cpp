// Documents read by libxml2.
#include "read_back.h"

#include <cstdio>
#include <cstdlib>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <memory>
#include <string_view>

using namespace quarl; // NOLINT: its parts are built here

namespace
{

std::string_view name_of(const xmlNode *node) { return reinterpret_cast<const char *>(node->name); }

std::string text_of(const xmlNode *node)
{
    xmlChar *content = xmlNodeGetContent(node);
    std::string text = content ? reinterpret_cast<const char *>(content) : "";
    xmlFree(content);
    return text;
}

std::string attribute(const xmlNode *node, const char *name)
{
    xmlChar *value = xmlGetProp(node, reinterpret_cast<const xmlChar *>(name));
    std::string text = value ? reinterpret_cast<const char *>(value) : "";
    xmlFree(value);
    return text;
}

/// The children with a name; all when it is empty.
std::vector<const xmlNode *> children(const xmlNode *node, std::string_view name = {})
{
    std::vector<const xmlNode *> found;
    for (const xmlNode *child = node ? node->children : nullptr; child; child = child->next)
        if (child->type == XML_ELEMENT_NODE && (name.empty() || name_of(child) == name))
            found.push_back(child);
    return found;
}

const xmlNode *child(const xmlNode *node, std::string_view name)
{
    const auto all = children(node, name);
    return all.empty() ? nullptr : all.front();
}

double number(const xmlNode *node) { return std::strtod(text_of(node).c_str(), nullptr); }
double number(const xmlNode *node, std::string_view name) { return number(child(node, name)); }

std::vector<double> numbers(const xmlNode *node, std::string_view name)
{
    std::vector<double> all;
    for (const xmlNode *each : children(node, name))
        all.push_back(number(each));
    return all;
}

double error_of(const xmlNode *node)
{
    const std::string plus = attribute(node, "plusError");
    if (plus != attribute(node, "minusError")) {
        std::puts("errors differ");
        std::exit(1);
    }
    return std::strtod(plus.c_str(), nullptr);
}

void read_roots(const xmlNode *node, std::string_view name,
                std::vector<std::complex<double>> *roots, std::vector<std::complex<double>> *errors)
{
    bool any = false;
    for (const xmlNode *each : children(node, name)) {
        const xmlNode *real = child(each, "Real");
        const xmlNode *imaginary = child(each, "Imaginary");
        roots->emplace_back(number(real), number(imaginary));
        errors->emplace_back(error_of(real), error_of(imaginary));
        any |= errors->back() != 0.0;
    }
    if (!any)
        errors->clear();
}

FilterShape roots_of(const xmlNode *node)
{
    const std::string type = text_of(child(node, "PzTransferFunctionType"));
    PolesZeros shape;
    shape.type = type == "LAPLACE (HERTZ)" ? 'B' : type[0] == 'D' ? 'D' : 'A';
    shape.factor = number(node, "NormalizationFactor");
    shape.frequency = number(node, "NormalizationFrequency");
    read_roots(node, "Zero", &shape.zeros, &shape.zero_errors);
    read_roots(node, "Pole", &shape.poles, &shape.pole_errors);
    return shape;
}

FilterShape shape_of(const xmlNode *node)
{
    const std::string_view kind = name_of(node);
    if (kind == "PolesZeros")
        return roots_of(node);
    if (kind == "Coefficients") {
        const std::string type = text_of(child(node, "CfTransferFunctionType"));
        return Coefficients{type == "DIGITAL"          ? 'D'
                            : type == "ANALOG (HERTZ)" ? 'B'
                                                       : 'A',
                            numbers(node, "Numerator"), numbers(node, "Denominator")};
    }
    if (kind == "FIR") {
        const std::string symmetry = text_of(child(node, "Symmetry"));
        return Fir{symmetry == "ODD"    ? 'B'
                   : symmetry == "EVEN" ? 'C'
                                        : 'A',
                   numbers(node, "NumeratorCoefficient")};
    }
    if (kind == "ResponseList") {
        ResponseList list;
        for (const xmlNode *each : children(node, "ResponseListElement"))
            list.entries.push_back(
                {number(each, "Frequency"), number(each, "Amplitude"), number(each, "Phase")});
        return list;
    }
    Polynomial shape;
    shape.frequency_unit = 'B';
    shape.lower_frequency = number(node, "FrequencyLowerBound");
    shape.upper_frequency = number(node, "FrequencyUpperBound");
    shape.lower_bound = number(node, "ApproximationLowerBound");
    shape.upper_bound = number(node, "ApproximationUpperBound");
    shape.maximum_error = number(node, "MaximumError");
    shape.coefficients = numbers(node, "Coefficient");
    return shape;
}

void read_stage(const xmlNode *node, ResponseBuilder *to)
{
    const int stage = std::atoi(attribute(node, "number").c_str());
    for (const xmlNode *each : children(node)) {
        const std::string_view kind = name_of(each);
        if (kind == "StageGain")
            to->add(stage, Part(Gain{number(each, "Value"), number(each, "Frequency")}));
        else if (kind == "Decimation")
            to->add(stage, Part(Decimation{number(each, "InputSampleRate"),
                                           static_cast<int>(number(each, "Factor")),
                                           static_cast<int>(number(each, "Offset")),
                                           number(each, "Delay"), number(each, "Correction")}));
        else
            to->add(stage,
                    Filter(shape_of(each), {1, text_of(child(child(each, "InputUnits"), "Name"))},
                           {2, text_of(child(child(each, "OutputUnits"), "Name"))},
                           attribute(each, "name")));
    }
}

ReadEpoch read_channel(const xmlNode *node, const std::string &station)
{
    static ResponsePool pool;
    ResponseBuilder builder(pool);
    const xmlNode *response = child(node, "Response");
    for (const xmlNode *each : children(response, "Stage"))
        read_stage(each, &builder);
    if (const xmlNode *gain = child(response, "InstrumentSensitivity"))
        builder.add(0, Part(Gain{number(gain, "Value"), number(gain, "Frequency")}));
    const xmlNode *polynomial = child(response, "InstrumentPolynomial");
    if (polynomial && children(response, "Stage").empty())
        builder.add(0, Filter(shape_of(polynomial)));
    return {station + '.' + attribute(node, "locationCode") + '.' + attribute(node, "code"),
            attribute(node, "startDate"), builder.take(number(node, "SampleRate"))};
}

} // namespace

std::vector<ReadEpoch> read_xml(const std::string &text)
{
    const std::unique_ptr<xmlDoc, void (*)(xmlDoc *)> document(
        xmlReadMemory(text.data(), static_cast<int>(text.size()), "document", nullptr,
                      XML_PARSE_NONET | XML_PARSE_HUGE),
        xmlFreeDoc);
    if (!document)
        std::exit(1);
    std::vector<ReadEpoch> epochs;
    for (const xmlNode *network : children(xmlDocGetRootElement(document.get()), "Network"))
        for (const xmlNode *station : children(network, "Station"))
            for (const xmlNode *channel : children(station, "Channel"))
                epochs.push_back(read_channel(channel, attribute(network, "code") + '.' +
                                                           attribute(station, "code")));
    return epochs;
}
