// What a response asks to be evaluated, or why it cannot be.
#pragma once

#include <quarl/response.h>

namespace quarl
{

/// One stage's factor of H.
struct Term {
    int stage = 0;
    FilterPtr filter;         ///< null: the stage is its gain alone
    bool is_made = false;     ///< the filter, of several blockettes: nobody else holds it
    double interval = 0.0;    ///< of the samples that a digital filter takes in, seconds; 0: analog
    double delay = 0.0;       ///< seconds by which the filter's output is taken back
    double gain = 1.0;        ///< enters H
    double stated_gain = 1.0; ///< enters the product that is compared with the sensitivity
    double gain_frequency = 0.0; ///< Hz
    bool as_stated = true;       ///< false: the filter's amplitude is made 1 at gain_frequency
};

struct Plan {
    std::vector<Term> terms;
    double frequency = 0.0;            ///< as in Evaluation
    std::optional<double> sensitivity; ///< the value of stage 0
    std::string error;                 ///< when there is one, the terms are incomplete
    std::vector<std::string> warnings;
};

Plan make_plan(const Response &response, const EvaluationOptions &options);

} // namespace quarl
