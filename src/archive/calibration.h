// What a count is worth in ground motion, as CSS 3.0 tells it.
#pragma once

#include <quarl/stages.h>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quarl::archive
{

/// How a unit measures the ground's motion.
struct Motion {
    bool is_motion = false;
    int order = 0;           ///< 0 displacement, 1 velocity, 2 acceleration
    double nanometres = 1.0; ///< per unit, or per unit and s, or per unit and s**2
};

/// "M", "NM/S", "1E-9 M/S**2", "M/S/S", whatever their case.
Motion motion_of(std::string_view unit);

/// The sensitivity of a channel epoch.
struct Sensitivity {
    bool given = false;
    double value = 0.0;     ///< counts per unit
    double frequency = 0.0; ///< Hz
};
/// The last gain of stage 0.
Sensitivity sensitivity_of(const Response &response);
/// The unit that stage 1 takes in; "" when nothing says so.
std::string input_unit(const Response &response);

struct Calibration {
    double calib = 1.0;   ///< nm per count; 1.0: not given
    double calper = -1.0; ///< s; -1.0: not given
};
Calibration calibration_of(const Sensitivity &sensitivity, std::string_view unit);

/// Digests of all that responses state, but for codes and names; the same in every run. Stages
/// that epochs share are looked at once.
class StageDigests
{
public:
    /// "-" when nothing is stated.
    std::string of(const Response &response);

private:
    std::unordered_map<StagePtr, std::string> known_;
};

} // namespace quarl::archive
