#include "platform/keyed_hash.h"
#include <quarl/stages.h>

#include <algorithm>
#include <bit>
#include <cstdint>

namespace quarl
{

namespace
{

/// Takes all that makes up a value into one hash, so that values which differ anywhere are told
/// apart in one step. Equal numbers give equal hashes, 0 and -0 too.
class Digest
{
public:
    void add(double number) // -0 becomes 0
    {
        content_.add(std::bit_cast<std::uint64_t>(number + 0.0));
    }
    void add(int number) { content_.add(static_cast<std::uint64_t>(number)); }
    void add(char letter) { content_.add(static_cast<std::uint64_t>(letter)); }
    void add(std::size_t hash) { content_.add(std::uint64_t{hash}); }
    void add(const std::string &text) { content_.add(std::string_view(text)); }
    void add(const std::complex<double> &number)
    {
        add(number.real());
        add(number.imag());
    }
    void add(const Unit &unit)
    {
        add(unit.code);
        add(unit.name);
    }
    template <class T> void add(const std::vector<T> &list)
    {
        add(list.size());
        for (const T &entry : list)
            add(entry);
    }

    void add(const PolesZeros &shape)
    {
        add(shape.type);
        add(shape.factor);
        add(shape.frequency);
        add(shape.zeros);
        add(shape.poles);
        add(shape.zero_errors);
        add(shape.pole_errors);
    }
    void add(const Coefficients &shape)
    {
        add(shape.type);
        add(shape.numerators);
        add(shape.denominators);
        add(shape.numerator_errors);
        add(shape.denominator_errors);
    }
    void add(const ResponseList::Entry &entry)
    {
        add(entry.frequency);
        add(entry.amplitude);
        add(entry.phase);
        add(entry.amplitude_error);
        add(entry.phase_error);
    }
    void add(const ResponseList &shape) { add(shape.entries); }
    void add(const GenericResponse::Corner &corner)
    {
        add(corner.frequency);
        add(corner.slope);
    }
    void add(const GenericResponse &shape) { add(shape.corners); }
    void add(const Fir &shape)
    {
        add(shape.symmetry);
        add(shape.coefficients);
    }
    void add(const Polynomial &shape)
    {
        add(shape.approximation);
        add(shape.frequency_unit);
        add(shape.lower_frequency);
        add(shape.upper_frequency);
        add(shape.lower_bound);
        add(shape.upper_bound);
        add(shape.maximum_error);
        add(shape.coefficients);
        add(shape.coefficient_errors);
    }

    void add(const FilterPtr &filter) { add(filter->hash()); }
    void add(const Decimation &decimation)
    {
        add(decimation.input_rate);
        add(decimation.factor);
        add(decimation.offset);
        add(decimation.delay);
        add(decimation.correction);
    }
    void add(const Gain &gain)
    {
        add(gain.value);
        add(gain.frequency);
    }
    void add(const StagePtr &stage) { add(stage->hash()); }
    template <class... T> void add(const std::variant<T...> &value)
    {
        add(value.index());
        std::visit([this](const auto &held) { this->add(held); }, value);
    }

    [[nodiscard]] std::size_t value() const { return content_.value(); }

private:
    HashedContent content_;
};

template <class... T> std::size_t hash_of(const T &...values)
{
    Digest digest;
    (digest.add(values), ...);
    return digest.value();
}

/// Parts alike; of filters the content counts.
bool same_part(const Part &a, const Part &b)
{
    const auto *filter = std::get_if<FilterPtr>(&a);
    const auto *other = std::get_if<FilterPtr>(&b);
    return filter && other ? *filter == *other || **filter == **other : a == b;
}

} // namespace

Filter::Filter(FilterShape shape, Unit input, Unit output, std::string name)
    : shape_(std::move(shape)), input_(std::move(input)), output_(std::move(output)),
      name_(std::move(name)), shape_hash_(hash_of(shape_)),
      hash_(hash_of(shape_hash_, input_, output_, name_))
{
}

bool Filter::operator==(const Filter &other) const
{
    return hash_ == other.hash_ && input_ == other.input_ && output_ == other.output_ &&
           name_ == other.name_ && shape_ == other.shape_;
}

std::size_t Stage::hash() const { return hash_of(number, parts); }

bool Stage::operator==(const Stage &other) const
{
    return number == other.number && std::ranges::equal(parts, other.parts, same_part);
}

std::size_t Response::hash() const { return hash_of(sample_rate, stages); }

bool Response::operator==(const Response &other) const
{
    return sample_rate == other.sample_rate &&
           std::ranges::equal(stages, other.stages, [](const StagePtr &a, const StagePtr &b) {
               return a == b || *a == *b;
           });
}

void ResponseBuilder::add(int stage, Filter filter)
{
    add(stage, Part(pool_.filters(std::move(filter))));
}

void ResponseBuilder::add(int stage, Part part)
{
    if (stage != open_.number)
        close_stage();
    open_.number = stage;
    open_.parts.push_back(std::move(part));
}

Response ResponseBuilder::take(double sample_rate)
{
    close_stage();
    response_.sample_rate = sample_rate;
    Response taken = response_;
    response_.stages.clear();
    return taken;
}

void ResponseBuilder::close_stage()
{
    if (open_.parts.empty())
        return;
    response_.stages.push_back(pool_.stages(std::as_const(open_)));
    open_.parts.clear();
}

} // namespace quarl
