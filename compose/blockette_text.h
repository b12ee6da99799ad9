// Texts of control blockettes from typed values: what follows the type and length of the prefix.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A station or span of an index with the record number of its header.
struct StationEntry {
    std::string station = {};
    int seq = 0;
};
struct SpanEntry {
    std::string begin = {};
    std::string end = {};
    int seq = 0;
};

struct B050 {
    std::string station = "QRL";
    double lat = 0;
    double lon = 0;
    double elev = 0;
    int num_chans = 0;
    int num_comments = 0;
    std::string name = "Test site";
    int net_id = 1;
    int long_order = 3210;
    int word_order = 10;
    std::string start = "2020,001";
    std::string end = {};
    char update = 'N';
    std::string network = "XX";
};

struct B052 {
    std::string location = {};
    std::string channel = "BHZ";
    int subchannel = 0;
    int instrument = 1;
    std::string comment = {};
    int units_signal = 1;
    int units_calibration = 2;
    double lat = 0;
    double lon = 0;
    double elev = 0;
    double depth = 0;
    double azimuth = 0;
    double dip = -90;
    int format = 1;
    int exponent = 12;
    double rate = 20;
    double drift = 0;
    int num_comments = 0;
    std::string flags = "CG";
    std::string start = "2020,001";
    std::string end = {};
    char update = 'N';
};

/// A pole or zero with its errors.
struct Root {
    double real = 0;
    double imag = 0;
    double real_error = 0;
    double imag_error = 0;
};

struct B053 {
    char type = 'A';
    int stage = 1;
    int input_units = 1;
    int output_units = 2;
    double factor = 1;
    double frequency = 1;
    std::vector<Root> zeros = {};
    std::vector<Root> poles = {};
};

/// Coefficients with their errors.
using Coefficients = std::vector<std::pair<double, double>>;

struct B054 {
    char type = 'D';
    int stage = 1;
    int input_units = 2;
    int output_units = 3;
    Coefficients numerators = {};
    Coefficients denominators = {};
};

struct ResponsePoint {
    double frequency = 0;
    double amplitude = 0;
    double amplitude_error = 0;
    double phase = 0;
    double phase_error = 0;
};

struct B061 {
    int stage = 1;
    std::string name = {};
    char symmetry = 'A';
    int input_units = 3;
    int output_units = 3;
    std::vector<double> coefficients = {};
};

struct B062 {
    char type = 'P';
    int stage = 1;
    int input_units = 1;
    int output_units = 2;
    char approximation = 'M';
    char frequency_units = 'B';
    double lower_frequency = 0;
    double upper_frequency = 1;
    double lower_bound = 0;
    double upper_bound = 1;
    double maximum_error = 0;
    Coefficients coefficients = {};
};

struct Magnitude {
    double value = 0;
    std::string type = {};
    int source = 0;
};

struct B071 {
    std::string time = {};
    int source = 0;
    double lat = 0;
    double lon = 0;
    double depth = 0;
    std::vector<Magnitude> magnitudes = {};
    int region = 0;
    int location = 0;
    std::string region_name = {};
};

struct B072 {
    std::string station = "QRL";
    std::string location = {};
    std::string channel = "BHZ";
    std::string time = {};
    double amplitude = 0;
    double period = 0;
    double snr = 0;
    std::string phase = "P";
    int source = 0;
    std::string network = "XX";
};

struct Piece {
    std::string station = "QRL";
    std::string location = {};
    std::string channel = "BHZ";
    std::string time = {};
    int seq = 0;
    int sub_seq = 1;
};

struct Repeat {
    std::string time = {};
    int seq = 0;
    int sub_seq = 1;
};

struct B074 {
    std::string station = "QRL";
    std::string location = {};
    std::string channel = "BHZ";
    Repeat first = {};
    Repeat last = {};
    std::vector<Repeat> repeats = {};
    std::string network = "XX";
};

std::string b010(double version, int exponent, std::string_view begin, std::string_view end,
                 std::string_view written, std::string_view organisation, std::string_view label);
std::string b011(const std::vector<StationEntry> &stations);
std::string b012(const std::vector<SpanEntry> &spans);
std::string b030(std::string_view name, int id, int family, const std::vector<std::string> &keys);
std::string b031(int id, char comment_class, std::string_view comment, int units);
std::string b032(int id, std::string_view author, std::string_view catalog,
                 std::string_view publisher);
std::string b033(int id, std::string_view abbreviation);
std::string b034(int id, std::string_view name, std::string_view description);
std::string b050(const B050 &b);
std::string b051(std::string_view begin, std::string_view end, int comment, int level);
std::string b052(const B052 &b);
std::string b053(const B053 &b);
std::string b054(const B054 &b);
std::string b055(int stage, int input_units, int output_units,
                 const std::vector<ResponsePoint> &points);
std::string b057(int stage, double rate, int factor, int offset, double delay, double correction);
std::string b058(int stage, double gain, double frequency);
std::string b059(std::string_view begin, std::string_view end, int comment, int level);
std::string b061(const B061 &b);
std::string b062(const B062 &b);
std::string b070(char flag, std::string_view begin, std::string_view end);
std::string b071(const B071 &b);
std::string b072(const B072 &b);
std::string b073(const std::vector<Piece> &pieces);
std::string b074(const B074 &b);
