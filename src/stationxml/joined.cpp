#include "stationxml/joined.h"

#include "platform/format.h"
#include "response/kind.h"

#include <memory>
#include <utility>
#include <variant>

namespace quarl
{

namespace
{

template <class T> void append(const std::vector<T> &from, std::vector<T> *to)
{
    to->insert(to->end(), from.begin(), from.end());
}

/// Errors have as many entries as what they belong to had, or none.
void append_errors(const std::vector<double> &from, std::size_t added, std::size_t before,
                   std::vector<double> *to)
{
    if (from.empty() && to->empty())
        return;
    to->resize(before);
    append(from, to);
    to->resize(before + added);
}

// What goes on of one kind: false when `next` does not continue `shape`.
bool go_on(Coefficients *shape, const Coefficients &next)
{
    if (shape->type != next.type)
        return false;
    append_errors(next.numerator_errors, next.numerators.size(), shape->numerators.size(),
                  &shape->numerator_errors);
    append_errors(next.denominator_errors, next.denominators.size(), shape->denominators.size(),
                  &shape->denominator_errors);
    append(next.numerators, &shape->numerators);
    append(next.denominators, &shape->denominators);
    return true;
}

bool go_on(ResponseList *shape, const ResponseList &next)
{
    append(next.entries, &shape->entries);
    return true;
}

bool go_on(Fir *shape, const Fir &next)
{
    if (shape->symmetry != next.symmetry)
        return false;
    append(next.coefficients, &shape->coefficients);
    return true;
}

template <class A, class B> bool go_on(A * /*shape*/, const B & /*next*/) { return false; }

bool go_on(FilterShape *shape, const FilterShape &next)
{
    return std::visit([](auto &a, const auto &b) { return go_on(&a, b); }, *shape, next);
}

} // namespace

std::vector<FilterPtr> joined(std::vector<FilterPtr> filters)
{
    if (filters.size() < 2)
        return filters;
    std::vector<FilterPtr> all;
    for (std::size_t i = 0; i < filters.size();) {
        FilterShape shape = filters[i]->shape();
        std::size_t next = i + 1;
        while (next < filters.size() && go_on(&shape, filters[next]->shape()))
            ++next;
        if (next == i + 1)
            all.push_back(filters[i]);
        else
            all.push_back(std::make_shared<const Filter>(std::move(shape), filters[i]->input(),
                                                         filters[next - 1]->output(),
                                                         filters[i]->name()));
        i = next;
    }
    return all;
}

std::string fault_of(const Filter &filter)
{
    const FilterShape &shape = filter.shape();
    const auto unless = [&](std::string_view types, char type) -> std::string {
        if (types.find(type) != std::string_view::npos)
            return "";
        return formatted<"there is no word for type '%s' of %s">(std::string(1, type),
                                                                 name_of(kind_of(shape)));
    };
    if (const auto *roots = std::get_if<PolesZeros>(&shape))
        return unless("ABD", roots->type);
    if (const auto *blk = std::get_if<Coefficients>(&shape))
        return unless("ABD", blk->type);
    if (const auto *fir = std::get_if<Fir>(&shape))
        return unless("ABC", fir->symmetry);
    const auto *polynomial = std::get_if<Polynomial>(&shape);
    if (polynomial && polynomial->coefficients.empty())
        return "a polynomial without coefficients";
    return polynomial ? unless("M", polynomial->approximation) : "";
}

} // namespace quarl
