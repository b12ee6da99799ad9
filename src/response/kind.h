// Kinds of filters, as far as they are evaluated in different ways.
#pragma once

#include <quarl/stages.h>

#include <cstddef>

namespace quarl
{

enum class Kind {
    AnalogRoots,
    DigitalRoots,
    Iir,
    FullFir, ///< all coefficients are given
    OddFir,  ///< the first half and the middle
    EvenFir, ///< the first half
    List,
    Generic,
    Polynomial,
    Unexpected ///< the type letter is one that is not evaluated
};

Kind kind_of(const FilterShape &shape);

/// Works on samples, and so needs their rate.
bool is_digital(Kind kind);

bool is_fir(Kind kind);

/// Has a list of several blockettes' entries, one after the other, as its own.
bool can_be_continued(Kind kind);

/// Its poles and zeros, coefficients, entries or corners.
std::size_t size_of(const FilterShape &shape);

/// Has nothing to evaluate: digital poles and zeros without any, no coefficients, an empty list.
bool is_empty(const FilterShape &shape);

/// As a message names it: "FIR filter".
const char *name_of(Kind kind);

/// The letter that says how a filter is to be read; a blank for shapes without one, `?` for what
/// cannot be printed.
char type_letter(const FilterShape &shape);

} // namespace quarl
