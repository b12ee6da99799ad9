#include "support/full_volume.h"

#include "compose/blockette_text.h"
#include "compose/volume.h"

std::string full_volume()
{
    VolumeBuilder volume(4096);
    volume.header('V')
        .blockette(10, b010(2.4, 12, "1999,300", "2001,002,03:04:05.5", "2002", "Org", "Label"))
        .blockette(11, b011({{"QRL", 3}, {"ABC", 4}}))
        .blockette(12, b012({{"2000,366", "2001,001", 5}, {"2001,002", "", 6}}));
    volume.header('A')
        .blockette(30, b030("32-Bit", 7, 0, {"M0", "W4 D0-31 C2"}))
        .blockette(31, b031(11, 'S', "Station remark", 0))
        .blockette(31, b031(12, 'C', "Channel remark", 0))
        .blockette(32, b032(13, "Author", "Catalog", "Publisher"))
        .blockette(33, b033(14, "Network name"))
        .blockette(33, b033(15, "Instrument"))
        .blockette(34, b034(16, "M/S", "Velocity"))
        .blockette(34, b034(17, "V", "Volts"))
        .blockette(34, b034(18, "A", "Amperes"))
        .blockette(34, b034(18, "COUNTS", "Digits"));
    volume.header('S')
        .blockette(50, b050({.station = "QRL",
                             .lat = 46.5,
                             .lon = 8.25,
                             .elev = 1742.5,
                             .name = "Quarry",
                             .net_id = 14,
                             .start = "1998,002",
                             .end = "2009,004",
                             .network = "XY"}))
        .blockette(51, b051("1999,001", "1999,002", 11, 3))
        .blockette(52, b052({.location = "00",
                             .channel = "BHZ",
                             .instrument = 15,
                             .comment = "Borehole",
                             .units_signal = 16,
                             .units_calibration = 17,
                             .lat = 46.25,
                             .lon = 8.5,
                             .elev = 1700.5,
                             .depth = 42.5,
                             .azimuth = 12.5,
                             .dip = -88.5,
                             .format = 7,
                             .exponent = 9,
                             .rate = 20,
                             .flags = "CG",
                             .start = "1998,003",
                             .end = "2000,366,12"}))
        .blockette(53, b053({.input_units = 16,
                             .output_units = 17,
                             .factor = 3.5,
                             .frequency = 1.25,
                             .zeros = {{0, 0.5}},
                             .poles = {{-1, 2}, {-3, -4}}}))
        .blockette(58, b058(1, 1500, 2))
        .blockette(54, b054({.stage = 2,
                             .input_units = 17,
                             .output_units = 18,
                             .numerators = {{0.25, 0}, {0.75, 0}}}))
        .blockette(57, b057(2, 200, 2, 1, 0.0625, 0.125))
        .blockette(58, b058(2, 2e6, 2.25))
        .blockette(61, b061({.stage = 3,
                             .name = "FIR",
                             .input_units = 18,
                             .output_units = 18,
                             .coefficients = {0.5, 0.375, 0.125}}))
        .blockette(57, b057(3, 100, 5, 2, 0.25, 0.375))
        .blockette(58, b058(3, 1, 2))
        .blockette(59, b059("1999,011", "1999,012", 12, 4))
        .blockette(59, b059("1999,013", "", 12, 5))
        .blockette(58, b058(0, 3e9, 2.5))
        .blockette(52, b052({.location = "00", .channel = "BHZ", .start = "2000,366,12"}))
        .blockette(52, b052({.channel = "LOG", .subchannel = 3}));
    volume.header('T')
        .blockette(70, b070('P', "2000,366", "2001,001"))
        .blockette(74, b074({.station = "QRL",
                             .location = "00",
                             .channel = "BHZ",
                             .first = {"2000,366,01", 5},
                             .last = {"2000,366,02", 6},
                             .network = "XY"}));
    // Ten seconds each; the first two overlaps come from back to front.
    for (const char *time : {"00:00:00", "00:00:10", "00:01:05", "00:01:00", "00:00:15", "00:02:00",
                             "00:03:00", "12:00:00"})
        volume.data({.station = "QRL",
                     .location = "00",
                     .channel = "BHZ",
                     .network = "XY",
                     .time = "2000,366," + std::string(time) + ".0000",
                     .samples = 200,
                     .b1000 = DataOnly{3, 1, 9}});
    volume.data({.time = "2001,366,00:00:00.0000", .b1000 = DataOnly{}}); // no such day
    return volume.volume();
}
