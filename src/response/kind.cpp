#include "response/kind.h"

namespace quarl
{

namespace
{

Kind kind(const PolesZeros &shape)
{
    if (shape.type == 'A' || shape.type == 'B')
        return Kind::AnalogRoots;
    return shape.type == 'D' ? Kind::DigitalRoots : Kind::Unexpected;
}

Kind kind(const Coefficients &shape)
{
    if (shape.type != 'D')
        return Kind::Unexpected;
    return shape.denominators.empty() ? Kind::FullFir : Kind::Iir;
}

Kind kind(const Fir &shape)
{
    switch (shape.symmetry) {
    case 'A':
        return Kind::FullFir;
    case 'B':
        return Kind::OddFir;
    case 'C':
        return Kind::EvenFir;
    default:
        return Kind::Unexpected;
    }
}

Kind kind(const ResponseList & /*shape*/) { return Kind::List; }
Kind kind(const GenericResponse & /*shape*/) { return Kind::Generic; }
Kind kind(const Polynomial & /*shape*/) { return Kind::Polynomial; }

std::size_t size(const PolesZeros &shape) { return shape.zeros.size() + shape.poles.size(); }
std::size_t size(const Coefficients &shape)
{
    return shape.numerators.size() + shape.denominators.size();
}
std::size_t size(const Fir &shape) { return shape.coefficients.size(); }
std::size_t size(const ResponseList &shape) { return shape.entries.size(); }
std::size_t size(const GenericResponse &shape) { return shape.corners.size(); }
std::size_t size(const Polynomial &shape) { return shape.coefficients.size(); }

char letter(const PolesZeros &shape) { return shape.type; }
char letter(const Coefficients &shape) { return shape.type; }
char letter(const Fir &shape) { return shape.symmetry; }
template <class Other> char letter(const Other & /*shape*/) { return ' '; }

} // namespace

Kind kind_of(const FilterShape &shape)
{
    return std::visit([](const auto &held) { return kind(held); }, shape);
}

bool is_digital(Kind kind)
{
    return kind == Kind::DigitalRoots || kind == Kind::Iir || is_fir(kind);
}

bool is_fir(Kind kind)
{
    return kind == Kind::FullFir || kind == Kind::OddFir || kind == Kind::EvenFir;
}

bool can_be_continued(Kind kind) { return is_fir(kind) || kind == Kind::List; }

std::size_t size_of(const FilterShape &shape)
{
    return std::visit([](const auto &held) { return size(held); }, shape);
}

bool is_empty(const FilterShape &shape)
{
    const auto *roots = std::get_if<PolesZeros>(&shape);
    return size_of(shape) == 0 && (!roots || roots->type == 'D');
}

const char *name_of(Kind kind)
{
    switch (kind) {
    case Kind::AnalogRoots:
        return "analog poles and zeros";
    case Kind::DigitalRoots:
        return "digital poles and zeros";
    case Kind::Iir:
        return "IIR filter";
    case Kind::FullFir:
        return "FIR filter";
    case Kind::OddFir:
        return "FIR filter of symmetry B";
    case Kind::EvenFir:
        return "FIR filter of symmetry C";
    case Kind::List:
        return "response list";
    case Kind::Generic:
        return "generic response";
    case Kind::Polynomial:
        return "polynomial";
    case Kind::Unexpected:
        break;
    }
    return "filter of unexpected type";
}

char type_letter(const FilterShape &shape)
{
    const char type = std::visit([](const auto &held) { return letter(held); }, shape);
    return type >= ' ' && type <= '~' ? type : '?';
}

} // namespace quarl
