#include "support/recipe.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <stdexcept>

namespace
{

int to_int(std::string_view text, int base = 10)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size())
        throw std::invalid_argument("not a number: '" + std::string(text) + "'");
    return value;
}

/// Takes the text up to the next `mark` off the front.
std::string_view next_part(std::string_view *text, char mark)
{
    const std::size_t end = std::min(text->find(mark), text->size());
    const std::string_view part = text->substr(0, end);
    text->remove_prefix(std::min(end + 1, text->size()));
    return part;
}

std::vector<int> to_ints(std::string_view text, std::size_t count)
{
    std::vector<int> values;
    while (!text.empty())
        values.push_back(to_int(next_part(&text, ',')));
    if (values.size() != count)
        throw std::invalid_argument(std::to_string(count) + " numbers expected");
    return values;
}

/// What the escape behind a backslash stands for; moves `text` past it.
std::string escape(std::string_view *text)
{
    const char kind = text->empty() ? '\0' : text->front();
    const std::size_t brace = kind == '{' ? text->find('}') : 0;
    const std::size_t size = kind == 'x' ? 3 : brace + 1;
    if (text->size() < size || brace == std::string_view::npos || (kind == '{' && brace < 3))
        throw std::invalid_argument("broken escape");
    const std::string_view body = text->substr(0, size);
    text->remove_prefix(size);
    switch (kind) {
    case 's':
        return " ";
    case 'n':
        return "\n";
    case '\\':
        return "\\";
    case 'x':
        return {static_cast<char>(to_int(body.substr(1), 16))};
    case '{':
        return std::string(static_cast<std::size_t>(to_int(body.substr(1, brace - 2))),
                           body[brace - 1]);
    default:
        throw std::invalid_argument("unknown escape");
    }
}

/// The characters that a recipe writes as `text`.
std::string characters(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const char c = text.front();
        text.remove_prefix(1);
        if (c == '\\')
            result += escape(&text);
        else if (c != '|')
            result += c;
    }
    return result;
}

char letter(std::string_view text)
{
    const std::string one = characters(text);
    if (one.size() != 1)
        throw std::invalid_argument("one character expected");
    return one[0];
}

bool is_little(std::string_view order)
{
    if (order != "little" && order != "big")
        throw std::invalid_argument("order is big or little");
    return order == "little";
}

using DataKey = void (*)(DataRecord *, std::string_view);

const std::map<std::string_view, DataKey> Data_Keys = {
    {"seq", [](auto *r, auto v) { r->seq = to_int(v); }},
    {"quality", [](auto *r, auto v) { r->quality = letter(v); }},
    {"sta", [](auto *r, auto v) { r->station = characters(v); }},
    {"loc", [](auto *r, auto v) { r->location = characters(v); }},
    {"chan", [](auto *r, auto v) { r->channel = characters(v); }},
    {"net", [](auto *r, auto v) { r->network = characters(v); }},
    {"time", [](auto *r, auto v) { r->time = v; }},
    {"samples", [](auto *r, auto v) { r->samples = to_int(v); }},
    {"rate",
     [](auto *r, auto v) {
         const std::vector<int> rate = to_ints(v, 2);
         r->rate_factor = rate[0];
         r->rate_multiplier = rate[1];
     }},
    {"activity", [](auto *r, auto v) { r->activity = to_int(v, 16); }},
    {"io", [](auto *r, auto v) { r->io_flags = to_int(v, 16); }},
    {"flags", [](auto *r, auto v) { r->quality_flags = to_int(v, 16); }},
    {"correction", [](auto *r, auto v) { r->time_correction = to_int(v); }},
    {"length", [](auto *r, auto v) { r->length = to_int(v); }},
    {"order", [](auto *r, auto v) { r->little = is_little(v); }},
    {"b1000",
     [](auto *r, auto v) {
         const std::vector<int> b = to_ints(v, 3);
         r->b1000 = DataOnly{b[0], b[1], b[2]};
     }},
    {"b1001", [](auto *r, auto v) { r->timing_quality = to_int(v); }},
    {"b100", [](auto *r, auto v) { r->actual_rate = static_cast<float>(to_int(v)); }},
    {"blk",
     [](auto *r, auto v) {
         const int type = to_int(next_part(&v, '/'));
         r->blockettes.emplace_back(type, characters(v));
     }},
    {"blockettes", [](auto *r, auto v) { r->num_blockettes = to_int(v); }},
    {"begin", [](auto *r, auto v) { r->begin_data = to_int(v); }},
    {"first", [](auto *r, auto v) { r->first_blockette = to_int(v); }},
    {"payload", [](auto *r, auto v) { r->payload = characters(v); }},
};

DataRecord data_record(std::string_view words)
{
    DataRecord record;
    while (!words.empty()) {
        std::string_view value = next_part(&words, ' ');
        if (value.empty())
            continue;
        const std::string_view name = next_part(&value, '=');
        const auto key = Data_Keys.find(name);
        if (key == Data_Keys.end())
            throw std::invalid_argument("unknown key '" + std::string(name) + "'");
        key->second(&record, value);
    }
    return record;
}

void add_sequence(VolumeBuilder *volume, std::string_view number)
{
    if (number.find_first_not_of("0123456789") == std::string_view::npos)
        volume->sequence(to_int(number));
    else
        volume->sequence_text(characters(number));
}

std::size_t to_size(std::string_view text) { return static_cast<std::size_t>(to_int(text)); }

using Step = void (*)(VolumeBuilder *, std::string_view);

const std::map<std::string_view, Step> Steps = {
    {"records", [](auto *v, auto rest) { v->records(to_int(rest)); }},
    {"header", [](auto *v, auto rest) { v->header(letter(rest)); }},
    {"sequence", add_sequence},
    {"text", [](auto *v, auto rest) { v->text(characters(rest)); }},
    {"pad", [](auto *v, auto rest) { v->pad(rest.empty() ? 0 : to_int(rest)); }},
    {"data", [](auto *v, auto rest) { v->data(data_record(rest)); }},
    {"raw", [](auto *v, auto rest) { v->raw(characters(rest)); }},
    {"cut", [](auto *v, auto rest) { v->cut(to_size(rest)); }},
    {"truncate", [](auto *v, auto rest) { v->truncate(to_size(rest)); }},
    {"file", [](auto *v, auto) { v->next_file(); }},
};

void follow(VolumeBuilder *volume, std::string_view rest)
{
    std::string_view word = next_part(&rest, ' ');
    if (const auto step = Steps.find(word); step != Steps.end())
        return step->second(volume, rest);
    const int type = to_int(next_part(&word, ':'));
    if (word.empty())
        volume->blockette(type, characters(rest));
    else
        volume->blockette(type, characters(word), characters(rest));
}

/// Appends a continuation line; the words of a data record stay apart.
void join(std::string *step, std::string_view line)
{
    if (step->rfind("data ", 0) == 0)
        *step += ' ';
    *step += line.substr(std::min(line.find_first_not_of(' '), line.size()));
}

} // namespace

VolumeBuilder parse_recipe(std::string_view recipe)
{
    VolumeBuilder volume;
    std::string step;
    int first = 0; // line where `step` begins
    const auto finish = [&] {
        try {
            if (!step.empty())
                follow(&volume, step);
        } catch (const std::exception &e) {
            throw std::runtime_error("line " + std::to_string(first) + ": " + e.what());
        }
    };
    for (int number = 1; !recipe.empty(); number++) {
        const std::string_view line = next_part(&recipe, '\n');
        if (line.empty() || line[0] == '#')
            continue;
        if (line[0] == ' ') {
            join(&step, line);
            continue;
        }
        finish();
        step = line;
        first = number;
    }
    finish();
    return volume;
}
