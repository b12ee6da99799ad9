// The responses of the sample's channels.
#pragma once

#include "compose/volume.h"

/// Codes of the unit dictionary.
enum Unit { Velocity = 1, Volts = 2, Counts = 3, Pressure = 4 };

/// Sensor, digitiser and the filters down to so many samples per second.
void add_seismometer(VolumeBuilder *v, double to_rate);

/// A barometer: pascals are a polynomial of its volts, and so of the counts. Its low-pass was
/// measured.
void add_barometer(VolumeBuilder *v);
