// The record types of a SEED volume.
#pragma once

#include <cstddef>
#include <quarl/fields.h>
#include <vector>

namespace quarl
{

/// The type number that stands for a data record.
inline constexpr int Data_Record = -1;

/// Base of every record. The type number travels beside the pointer; there is nothing virtual.
struct record_t {
protected:
    ~record_t() = default;
};

// Sizes of texts, terminator included.
inline constexpr std::size_t Station_Size = 16;
inline constexpr std::size_t Location_Size = 3;
inline constexpr std::size_t Channel_Id_Size = 4;
inline constexpr std::size_t Channel_Size = 15;
inline constexpr std::size_t Network_Size = 3;
inline constexpr std::size_t Time_Size = 23; ///< SEED time: YYYY,DDD,HH:MM:SS.FFFF
inline constexpr std::size_t Format_Name_Size = 51;

// A count of the volume may promise more entries of a list than stand in the blockette. Where the
// listing trusts it, the list is as long as promised, and a number with the ending "_held" tells
// how many entries its bytes have room for; those behind them are 0 or empty. A list that is not
// listed has no more than these, and what was promised stands beside it.

/// What every control blockette begins with.
struct blk_t : record_t {
    int type = 0;   ///< blockette type number
    int length = 0; ///< length of blockette in bytes, as declared
};

/// The station and channel to which a response or comment belongs: copied at parse time from the
/// last station and channel identifiers of the run.
struct channel_context_t {
    char station[Station_Size] = "";
    char network_code[Network_Size] = "";
    char channel[Channel_Size] = "";
    char start_date[Time_Size] = "";
    char end_date[Time_Size] = "";
    double sample_rate = 0.0; ///< samples per second
    int instr_id = 0;         ///< instrument identifier (generic abbreviation)
    char loc_id[Location_Size] = "";
    char chan_id[Channel_Id_Size] = "";
    int subchan_id = 0;
    bool channel_is_of_station = false; ///< the last channel came behind the last station

    static constexpr auto station_context()
    {
        using namespace quarl::fields;
        return all_fields(text("network", &channel_context_t::network_code),
                          text("station", &channel_context_t::station));
    }
    /// These say something when the channel is of the station.
    static constexpr auto channel_context()
    {
        using namespace quarl::fields;
        return all_fields(text("location", &channel_context_t::loc_id),
                          text("channel", &channel_context_t::chan_id),
                          when("epoch_start", &channel_context_t::start_date),
                          until("epoch_end", &channel_context_t::end_date));
    }
};

struct Complex_t {
    double real = 0.0;
    double imag = 0.0;
};

/// Volume Identifier.
struct blk_010_t : blk_t {
    static constexpr int Number = 10;
    double version = 2.3;
    int rec_len = 12; ///< logical record length exponent
    char beg_time[Time_Size] = "";
    char end_time[Time_Size] = "";
    char volume_time[Time_Size] = "";
    char originating_org[81] = "";
    char label[81] = "";

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(number("version_of_format", &blk_010_t::version),
                          exponent("logical_record_length", &blk_010_t::rec_len),
                          when("beginning_time", &blk_010_t::beg_time),
                          until("end_time", &blk_010_t::end_time),
                          when("volume_time", &blk_010_t::volume_time),
                          text("originating_organization", &blk_010_t::originating_org),
                          text("label", &blk_010_t::label));
    }
};

/// Volume Station Header Index.
struct blk_011_t : blk_t {
    static constexpr int Number = 11;
    static constexpr std::size_t Slot = 6; ///< five characters and a terminator
    int num_stn = 0;
    int num_stn_held = 0;
    std::vector<char> stn_id; ///< num_stn slots
    std::vector<int> seq_num; ///< logical record in which each station's header begins

    [[nodiscard]] const char *station(std::size_t i) const { return stn_id.data() + i * Slot; }

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(limited_list("stations", "number_of_stations", &blk_011_t::num_stn_held,
                                       &blk_011_t::num_stn,
                                       column({"station", {}, Meaning::text}, &blk_011_t::station),
                                       column({"sequence_number"}, &blk_011_t::seq_num)));
    }
};

/// Volume Time Span Index.
struct blk_012_t : blk_t {
    static constexpr int Number = 12;
    static constexpr int Capacity = 999;
    int num_span = 0;          ///< kept
    int num_span_promised = 0; ///< as counted by the volume
    int num_span_held = 0;
    char beg_span[Capacity][Time_Size] = {};
    char end_span[Capacity][Time_Size] = {};
    int seq_num[Capacity] = {};

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(limited_list(
            "spans", "number_of_spans", &blk_012_t::num_span_held, &blk_012_t::num_span_promised,
            column({"beginning_of_span", {}, Meaning::time}, &blk_012_t::beg_span),
            column({"end_of_span", {}, Meaning::end_time}, &blk_012_t::end_span),
            column({"sequence_number"}, &blk_012_t::seq_num)));
    }
};

/// Data Format Dictionary.
struct blk_030_t : blk_t {
    static constexpr int Number = 30;
    struct DecodeKey {
        char text[200] = "";
    };
    char name[Format_Name_Size] = "";
    int format_id = 0;  ///< data format identifier code
    int data_type = -1; ///< data family type
    int num_keys = 0;
    int num_keys_held = 0;
    std::vector<DecodeKey> decode_key;

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            text("short_descriptive_name", &blk_030_t::name),
            key("data_format_identifier_code", Dictionary::data_formats, &blk_030_t::format_id),
            number("data_family_type", &blk_030_t::data_type),
            limited_list("decoder_keys", "number_of_decoder_keys", &blk_030_t::num_keys_held,
                         &blk_030_t::num_keys,
                         column({"decoder_key", {}, Meaning::text}, &blk_030_t::decode_key,
                                &blk_030_t::DecodeKey::text)));
    }
};

/// Comment Description.
struct blk_031_t : blk_t {
    static constexpr int Number = 31;
    int comment_id = 0; ///< comment code key
    char class_code = ' ';
    char comment[71] = "";
    int units = 0; ///< units of comment level

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            key("comment_code_key", Dictionary::comments, &blk_031_t::comment_id),
            text("comment_class_code", &blk_031_t::class_code),
            text("description_of_comment", &blk_031_t::comment),
            or_blank(code("units_of_comment_level", Dictionary::units, &blk_031_t::units)));
    }
};

/// Cited Source Dictionary.
struct blk_032_t : blk_t {
    static constexpr int Number = 32;
    int source_id = 0;
    char author[71] = "";
    char catalog[71] = ""; ///< date published or catalogue
    char publisher[51] = "";

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(key("source_lookup_code", Dictionary::sources, &blk_032_t::source_id),
                          text("name_of_publication_or_author", &blk_032_t::author),
                          text("date_published_or_catalog", &blk_032_t::catalog),
                          text("publisher_name", &blk_032_t::publisher));
    }
};

/// Generic Abbreviation.
struct blk_033_t : blk_t {
    static constexpr int Number = 33;
    int abbrev_id = 0;
    char abbrev[51] = "";

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            key("abbreviation_lookup_code", Dictionary::abbreviations, &blk_033_t::abbrev_id),
            text("abbreviation_description", &blk_033_t::abbrev));
    }
};

/// Units Abbreviation.
struct blk_034_t : blk_t {
    static constexpr int Number = 34;
    int unit_id = 0;
    char unit_name[21] = "";
    char unit_desc[51] = "";

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(key("unit_lookup_code", Dictionary::units, &blk_034_t::unit_id),
                          text("unit_name", &blk_034_t::unit_name),
                          text("unit_description", &blk_034_t::unit_desc));
    }
};

/// Station Identifier.
struct blk_050_t : blk_t {
    static constexpr int Number = 50;
    char station[Station_Size] = ""; ///< station call letters
    double lat = 0.0;                ///< degrees
    double lon = 0.0;                ///< degrees
    double elev = 0.0;               ///< metres
    int num_chans = 0;               ///< not read, stays 0
    int num_comm = 0;                ///< not read, stays 0
    char name[61] = "";              ///< site name
    int net_id = 0;                  ///< network identifier (generic abbreviation)
    int long_order = 3210;           ///< 32-bit word order
    int word_order = 10;             ///< 16-bit word order
    char start_date[Time_Size] = "";
    char end_date[Time_Size] = ""; ///< empty when open
    char update = 'N';
    char network_code[Network_Size] = "  ";

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            text("station", &blk_050_t::station), number("latitude", &blk_050_t::lat, "degrees"),
            number("longitude", &blk_050_t::lon, "degrees"),
            number("elevation", &blk_050_t::elev, "m"),
            absent("number_of_channels", &blk_050_t::num_chans),
            absent("number_of_station_comments", &blk_050_t::num_comm),
            text("site_name", &blk_050_t::name),
            code("network_identifier", Dictionary::abbreviations, &blk_050_t::net_id),
            number("word_order_32_bit", &blk_050_t::long_order),
            number("word_order_16_bit", &blk_050_t::word_order),
            when("start_effective_date", &blk_050_t::start_date),
            until("end_effective_date", &blk_050_t::end_date),
            text("update_flag", &blk_050_t::update), text("network", &blk_050_t::network_code));
    }
};

/// Station Comment.
struct blk_051_t : blk_t {
    static constexpr int Number = 51;
    char beg_time[Time_Size] = "";
    char end_time[Time_Size] = "";
    int comment_key = 0; ///< comment code key
    int comment_level = 0;
    char station[Station_Size] = "";
    char network_code[Network_Size] = "";

    static constexpr auto station_context()
    {
        using namespace quarl::fields;
        return all_fields(text("network", &blk_051_t::network_code),
                          text("station", &blk_051_t::station));
    }
    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(when("beginning_effective_time", &blk_051_t::beg_time),
                          until("end_effective_time", &blk_051_t::end_time),
                          code("comment", Dictionary::comments, &blk_051_t::comment_key),
                          or_blank(number("comment_level", &blk_051_t::comment_level)));
    }
};

/// Channel Identifier.
struct blk_052_t : blk_t {
    static constexpr int Number = 52;
    char loc_id[Location_Size] = "  ";
    char chan_id[Channel_Id_Size] = "   ";
    int subchan_id = 0; ///< 0 when the channel is not multiplexed
    int instr_id = 0;   ///< instrument identifier (generic abbreviation)
    char comment[31] = "";
    int units_signal = 0;
    int units_cal = 0;
    double lat = 0.0;            ///< degrees
    double lon = 0.0;            ///< degrees
    double elev = 0.0;           ///< metres
    double depth = 0.0;          ///< local depth, metres
    double azimuth = 0.0;        ///< degrees clockwise from north
    double dip = 0.0;            ///< degrees down from horizontal
    int format_id = 0;           ///< data format identifier code
    int record_length = 12;      ///< data record length exponent, in the legal range
    int record_length_read = 12; ///< as it stands in the volume
    double sample_rate = 0.0;
    double max_drift = 0.0; ///< maximum clock drift, seconds per sample
    int num_comments = 0;
    char chan_flags[27] = "";
    char start_date[Time_Size] = "";
    char end_date[Time_Size] = ""; ///< empty when open
    char update = 'N';
    char station[Station_Size] = "";
    char network_code[Network_Size] = "";
    /// Codes of channel and location, of a subchannel also the letter of its orientation (Z, N, E,
    /// A, B, C) or, where azimuth and dip fit none, its number.
    char channel[Channel_Size] = "";
    int changroup = 0;

    static constexpr auto station_context()
    {
        using namespace quarl::fields;
        return all_fields(text("network", &blk_052_t::network_code),
                          text("station", &blk_052_t::station));
    }
    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            text("location", &blk_052_t::loc_id), text("channel", &blk_052_t::chan_id),
            or_blank(number("subchannel", &blk_052_t::subchan_id)),
            code("instrument", Dictionary::abbreviations, &blk_052_t::instr_id),
            text("optional_comment", &blk_052_t::comment),
            code("signal_units", Dictionary::units, &blk_052_t::units_signal),
            or_blank(code("calibration_units", Dictionary::units, &blk_052_t::units_cal)),
            number("latitude", &blk_052_t::lat, "degrees"),
            number("longitude", &blk_052_t::lon, "degrees"),
            number("elevation", &blk_052_t::elev, "m"),
            number("local_depth", &blk_052_t::depth, "m"),
            number("azimuth", &blk_052_t::azimuth, "degrees"),
            number("dip", &blk_052_t::dip, "degrees"),
            code("data_format", Dictionary::data_formats, &blk_052_t::format_id),
            exponent("data_record_length", &blk_052_t::record_length),
            exponent("data_record_length_as_read", &blk_052_t::record_length_read),
            number("sample_rate", &blk_052_t::sample_rate, "Hz"),
            or_blank(number("max_clock_drift", &blk_052_t::max_drift, "s/sample")),
            or_blank(number("number_of_comments", &blk_052_t::num_comments)),
            text("channel_flags", &blk_052_t::chan_flags),
            when("start_date", &blk_052_t::start_date), until("end_date", &blk_052_t::end_date),
            text("update_flag", &blk_052_t::update));
    }
};

/// Response (Poles and Zeros).
struct blk_053_t : blk_t, channel_context_t {
    static constexpr int Number = 53;
    char func_type = ' '; ///< transfer function type
    int stage_num = 0;
    int input_units = 0;
    int output_units = 0;
    double normal_factor = 1.0; ///< A0 normalisation factor
    double normal_freq = 0.0;   ///< Hz
    int num_zeros = 0;
    int num_zeros_held = 0;
    std::vector<Complex_t> zero;
    std::vector<Complex_t> zero_error;
    int num_poles = 0;
    int num_poles_held = 0;
    std::vector<Complex_t> pole;
    std::vector<Complex_t> pole_error;
    int changroup = 0;

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            text("transfer_function_type", &blk_053_t::func_type),
            number("stage_sequence_number", &blk_053_t::stage_num),
            code("input_units", Dictionary::units, &blk_053_t::input_units),
            code("output_units", Dictionary::units, &blk_053_t::output_units),
            number("a0_normalization_factor", &blk_053_t::normal_factor),
            number("normalization_frequency", &blk_053_t::normal_freq, "Hz"),
            limited_list("zeros", "number_of_complex_zeros", &blk_053_t::num_zeros_held,
                         &blk_053_t::num_zeros,
                         column({"real"}, &blk_053_t::zero, &Complex_t::real),
                         column({"imaginary"}, &blk_053_t::zero, &Complex_t::imag),
                         column({"real_error"}, &blk_053_t::zero_error, &Complex_t::real),
                         column({"imaginary_error"}, &blk_053_t::zero_error, &Complex_t::imag)),
            limited_list("poles", "number_of_complex_poles", &blk_053_t::num_poles_held,
                         &blk_053_t::num_poles,
                         column({"real"}, &blk_053_t::pole, &Complex_t::real),
                         column({"imaginary"}, &blk_053_t::pole, &Complex_t::imag),
                         column({"real_error"}, &blk_053_t::pole_error, &Complex_t::real),
                         column({"imaginary_error"}, &blk_053_t::pole_error, &Complex_t::imag)));
    }
};

/// Response (Coefficients).
struct blk_054_t : blk_t, channel_context_t {
    static constexpr int Number = 54;
    char func_type = ' '; ///< response type
    int stage_num = 0;
    int input_units = 0;
    int output_units = 0;
    int num_numer = 0;
    int num_numer_held = 0;
    std::vector<double> numer_coef;
    std::vector<double> numer_error;
    int num_denom = 0;
    int num_denom_held = 0;
    std::vector<double> denom_coef;
    std::vector<double> denom_error;
    int changroup = 0;

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            text("response_type", &blk_054_t::func_type),
            number("stage_sequence_number", &blk_054_t::stage_num),
            code("input_units", Dictionary::units, &blk_054_t::input_units),
            code("output_units", Dictionary::units, &blk_054_t::output_units),
            limited_list("numerators", "number_of_numerators", &blk_054_t::num_numer_held,
                         &blk_054_t::num_numer, column({"coefficient"}, &blk_054_t::numer_coef),
                         column({"error"}, &blk_054_t::numer_error)),
            limited_list("denominators", "number_of_denominators", &blk_054_t::num_denom_held,
                         &blk_054_t::num_denom, column({"coefficient"}, &blk_054_t::denom_coef),
                         column({"error"}, &blk_054_t::denom_error)));
    }
};

/// Response List.
struct blk_055_t : blk_t, channel_context_t {
    static constexpr int Number = 55;
    int stage_num = 0;
    int input_units = 0;
    int output_units = 0;
    int num_resp = 0;
    int num_resp_held = 0;
    std::vector<double> frequency; ///< Hz
    std::vector<double> amplitude;
    std::vector<double> amplitude_error;
    std::vector<double> phase; ///< degrees
    std::vector<double> phase_error;
    int changroup = 0;

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            number("stage_sequence_number", &blk_055_t::stage_num),
            code("input_units", Dictionary::units, &blk_055_t::input_units),
            code("output_units", Dictionary::units, &blk_055_t::output_units),
            limited_list("responses", "number_of_responses_listed", &blk_055_t::num_resp_held,
                         &blk_055_t::num_resp, column({"frequency", "Hz"}, &blk_055_t::frequency),
                         column({"amplitude"}, &blk_055_t::amplitude),
                         column({"amplitude_error"}, &blk_055_t::amplitude_error),
                         column({"phase_angle", "degrees"}, &blk_055_t::phase),
                         column({"phase_error", "degrees"}, &blk_055_t::phase_error)));
    }
};

/// Decimation. Its context carries no sample rate: `samprate` is the stage's own input rate.
struct blk_057_t : blk_t, channel_context_t {
    static constexpr int Number = 57;
    int stage_num = 0;
    double samprate = 0.0; ///< samples per second
    int dec_factor = 0;
    int dec_offset = 0;
    double delay = 0.0;      ///< estimated delay, seconds
    double correction = 0.0; ///< correction applied, seconds
    int changroup = 0;

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(number("stage_sequence_number", &blk_057_t::stage_num),
                          number("input_sample_rate", &blk_057_t::samprate, "Hz"),
                          number("decimation_factor", &blk_057_t::dec_factor),
                          number("decimation_offset", &blk_057_t::dec_offset),
                          number("estimated_delay", &blk_057_t::delay, "s"),
                          number("correction_applied", &blk_057_t::correction, "s"));
    }
};

/// Time of a calibration.
struct calibration_time_t {
    char text[Time_Size] = "";
};

/// Channel Sensitivity/Gain. The calibration history is not listed, and read for programs only.
struct blk_058_t : blk_t, channel_context_t {
    static constexpr int Number = 58;
    int stage_num = 0; ///< 0: the whole channel's sensitivity
    double gain = 0.0;
    double freq = 0.0; ///< Hz
    int units_signal = 0;
    int num_history = 0;
    int num_history_promised = 0;
    std::vector<double> calibration_gain;
    std::vector<double> calibration_freq; ///< Hz
    std::vector<calibration_time_t> calibration_time;
    int changroup = 0;

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            number("stage_sequence_number", &blk_058_t::stage_num),
            number("sensitivity_or_gain", &blk_058_t::gain),
            number("frequency", &blk_058_t::freq, "Hz"),
            limited_list("history", "number_of_history_values", &blk_058_t::num_history,
                         &blk_058_t::num_history_promised,
                         column({"sensitivity"}, &blk_058_t::calibration_gain),
                         column({"frequency", "Hz"}, &blk_058_t::calibration_freq),
                         column({"time", {}, Meaning::time}, &blk_058_t::calibration_time,
                                &calibration_time_t::text)));
    }
};

/// Channel Comment.
struct blk_059_t : blk_t, channel_context_t {
    static constexpr int Number = 59;
    char beg_time[Time_Size] = "";
    char end_time[Time_Size] = "";
    int comment_key = 0;
    int comment_level = 0;

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(when("beginning_effective_time", &blk_059_t::beg_time),
                          until("end_effective_time", &blk_059_t::end_time),
                          code("comment", Dictionary::comments, &blk_059_t::comment_key),
                          or_blank(number("comment_level", &blk_059_t::comment_level)));
    }
};

/// FIR Response.
struct blk_061_t : blk_t, channel_context_t {
    static constexpr int Number = 61;
    int stage_num = 0;
    char response_name[26] = "";
    char symmetry = ' ';
    int input_units = 0;
    int output_units = 0;
    int num_coef = 0;
    int num_coef_held = 0;
    std::vector<double> coef;
    int changroup = 0;

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(number("stage_sequence_number", &blk_061_t::stage_num),
                          text("response_name", &blk_061_t::response_name),
                          text("symmetry_code", &blk_061_t::symmetry),
                          code("input_units", Dictionary::units, &blk_061_t::input_units),
                          code("output_units", Dictionary::units, &blk_061_t::output_units),
                          limited_list("coefficients", "number_of_coefficients",
                                       &blk_061_t::num_coef_held, &blk_061_t::num_coef,
                                       column({"coefficient"}, &blk_061_t::coef)));
    }
};

/// Response (Polynomial). The standard gives its count three characters, and so does every writer;
/// the listing has always read four, with the first character of the first coefficient (its sign,
/// as a rule) as a digit of the count and all coefficients one character late. It goes on to do so:
/// its lines are compared with older ones. Programs get the coefficients as they were written.
struct blk_062_t : blk_t, channel_context_t {
    static constexpr int Number = 62;
    char transfer_function_type = 'P';
    int stage_num = 0;
    int input_units = 0;
    int output_units = 0;
    char polynomial_approximation_type = 'M';
    char valid_frequency_units = 'A';
    double lower_valid_frequency_bound = 0.0;
    double upper_valid_frequency_bound = 0.0;
    double lower_bound_of_approximation = 0.0;
    double upper_bound_of_approximation = 0.0;
    double maximum_absolute_error = 0.0;
    int num_coef = 0;
    int num_coef_promised = 0;
    std::vector<double> coef;
    std::vector<double> coef_error;
    int num_coef_listed = 0; ///< the listing's reading
    std::vector<double> coef_listed;
    std::vector<double> coef_error_listed;
    int changroup = 0;

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            text("transfer_function_type", &blk_062_t::transfer_function_type),
            number("stage_sequence_number", &blk_062_t::stage_num),
            code("input_units", Dictionary::units, &blk_062_t::input_units),
            code("output_units", Dictionary::units, &blk_062_t::output_units),
            text("polynomial_approximation_type", &blk_062_t::polynomial_approximation_type),
            text("valid_frequency_units", &blk_062_t::valid_frequency_units),
            number("lower_valid_frequency_bound", &blk_062_t::lower_valid_frequency_bound),
            number("upper_valid_frequency_bound", &blk_062_t::upper_valid_frequency_bound),
            number("lower_bound_of_approximation", &blk_062_t::lower_bound_of_approximation),
            number("upper_bound_of_approximation", &blk_062_t::upper_bound_of_approximation),
            number("maximum_absolute_error", &blk_062_t::maximum_absolute_error),
            limited_list("coefficients", "number_of_coefficients", &blk_062_t::num_coef,
                         &blk_062_t::num_coef_promised, column({"coefficient"}, &blk_062_t::coef),
                         column({"error"}, &blk_062_t::coef_error)));
    }
};

// Types that the listing does not show: responses by reference (entries of the response dictionary,
// and a channel's references to them), and the generic response.

/// FIR Dictionary.
struct blk_041_t : blk_t {
    static constexpr int Number = 41;
    int lookup_key = 0;
    char response_name[26] = "";
    char symmetry = ' ';
    int input_units = 0;
    int output_units = 0;
    int num_coef = 0;          ///< in this blockette
    int num_coef_promised = 0; ///< in it and in further ones of its key
    std::vector<double> coef;

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(key("response_lookup_key", Dictionary::responses, &blk_041_t::lookup_key),
                          text("response_name", &blk_041_t::response_name),
                          text("symmetry_code", &blk_041_t::symmetry),
                          code("input_units", Dictionary::units, &blk_041_t::input_units),
                          code("output_units", Dictionary::units, &blk_041_t::output_units),
                          limited_list("coefficients", "number_of_coefficients",
                                       &blk_041_t::num_coef, &blk_041_t::num_coef_promised,
                                       column({"coefficient"}, &blk_041_t::coef)));
    }
};

/// Response (Poles and Zeros) Dictionary.
struct blk_043_t : blk_t {
    static constexpr int Number = 43;
    int lookup_key = 0;
    char response_name[26] = "";
    char func_type = ' ';
    int input_units = 0;
    int output_units = 0;
    double normal_factor = 1.0; ///< A0 normalisation factor
    double normal_freq = 0.0;   ///< Hz
    int num_zeros = 0;
    int num_zeros_promised = 0;
    std::vector<Complex_t> zero;
    std::vector<Complex_t> zero_error;
    int num_poles = 0;
    int num_poles_promised = 0;
    std::vector<Complex_t> pole;
    std::vector<Complex_t> pole_error;

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            key("response_lookup_key", Dictionary::responses, &blk_043_t::lookup_key),
            text("response_name", &blk_043_t::response_name),
            text("transfer_function_type", &blk_043_t::func_type),
            code("input_units", Dictionary::units, &blk_043_t::input_units),
            code("output_units", Dictionary::units, &blk_043_t::output_units),
            number("a0_normalization_factor", &blk_043_t::normal_factor),
            number("normalization_frequency", &blk_043_t::normal_freq, "Hz"),
            limited_list("zeros", "number_of_complex_zeros", &blk_043_t::num_zeros,
                         &blk_043_t::num_zeros_promised,
                         column({"real"}, &blk_043_t::zero, &Complex_t::real),
                         column({"imaginary"}, &blk_043_t::zero, &Complex_t::imag),
                         column({"real_error"}, &blk_043_t::zero_error, &Complex_t::real),
                         column({"imaginary_error"}, &blk_043_t::zero_error, &Complex_t::imag)),
            limited_list("poles", "number_of_complex_poles", &blk_043_t::num_poles,
                         &blk_043_t::num_poles_promised,
                         column({"real"}, &blk_043_t::pole, &Complex_t::real),
                         column({"imaginary"}, &blk_043_t::pole, &Complex_t::imag),
                         column({"real_error"}, &blk_043_t::pole_error, &Complex_t::real),
                         column({"imaginary_error"}, &blk_043_t::pole_error, &Complex_t::imag)));
    }
};

/// Response (Coefficients) Dictionary.
struct blk_044_t : blk_t {
    static constexpr int Number = 44;
    int lookup_key = 0;
    char response_name[26] = "";
    char func_type = ' ';
    int input_units = 0;
    int output_units = 0;
    int num_numer = 0;
    int num_numer_promised = 0;
    std::vector<double> numer_coef;
    std::vector<double> numer_error;
    int num_denom = 0;
    int num_denom_promised = 0;
    std::vector<double> denom_coef;
    std::vector<double> denom_error;

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(key("response_lookup_key", Dictionary::responses, &blk_044_t::lookup_key),
                          text("response_name", &blk_044_t::response_name),
                          text("response_type", &blk_044_t::func_type),
                          code("input_units", Dictionary::units, &blk_044_t::input_units),
                          code("output_units", Dictionary::units, &blk_044_t::output_units),
                          limited_list("numerators", "number_of_numerators", &blk_044_t::num_numer,
                                       &blk_044_t::num_numer_promised,
                                       column({"coefficient"}, &blk_044_t::numer_coef),
                                       column({"error"}, &blk_044_t::numer_error)),
                          limited_list("denominators", "number_of_denominators",
                                       &blk_044_t::num_denom, &blk_044_t::num_denom_promised,
                                       column({"coefficient"}, &blk_044_t::denom_coef),
                                       column({"error"}, &blk_044_t::denom_error)));
    }
};

/// Response List Dictionary.
struct blk_045_t : blk_t {
    static constexpr int Number = 45;
    int lookup_key = 0;
    char response_name[26] = "";
    int input_units = 0;
    int output_units = 0;
    int num_resp = 0;
    int num_resp_promised = 0;
    std::vector<double> frequency; ///< Hz
    std::vector<double> amplitude;
    std::vector<double> amplitude_error;
    std::vector<double> phase; ///< degrees
    std::vector<double> phase_error;

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            key("response_lookup_key", Dictionary::responses, &blk_045_t::lookup_key),
            text("response_name", &blk_045_t::response_name),
            code("input_units", Dictionary::units, &blk_045_t::input_units),
            code("output_units", Dictionary::units, &blk_045_t::output_units),
            limited_list("responses", "number_of_responses_listed", &blk_045_t::num_resp,
                         &blk_045_t::num_resp_promised,
                         column({"frequency", "Hz"}, &blk_045_t::frequency),
                         column({"amplitude"}, &blk_045_t::amplitude),
                         column({"amplitude_error"}, &blk_045_t::amplitude_error),
                         column({"phase_angle", "degrees"}, &blk_045_t::phase),
                         column({"phase_error", "degrees"}, &blk_045_t::phase_error)));
    }
};

/// Generic Response Dictionary.
struct blk_046_t : blk_t {
    static constexpr int Number = 46;
    int lookup_key = 0;
    char response_name[26] = "";
    int input_units = 0;
    int output_units = 0;
    int num_corners = 0;
    int num_corners_promised = 0;
    std::vector<double> corner_freq;  ///< Hz
    std::vector<double> corner_slope; ///< dB per decade

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            key("response_lookup_key", Dictionary::responses, &blk_046_t::lookup_key),
            text("response_name", &blk_046_t::response_name),
            code("input_units", Dictionary::units, &blk_046_t::input_units),
            code("output_units", Dictionary::units, &blk_046_t::output_units),
            limited_list("corners", "number_of_corners_listed", &blk_046_t::num_corners,
                         &blk_046_t::num_corners_promised,
                         column({"corner_frequency", "Hz"}, &blk_046_t::corner_freq),
                         column({"corner_slope", "dB/decade"}, &blk_046_t::corner_slope)));
    }
};

/// Decimation Dictionary.
struct blk_047_t : blk_t {
    static constexpr int Number = 47;
    int lookup_key = 0;
    char response_name[26] = "";
    double samprate = 0.0; ///< input rate, samples per second
    int dec_factor = 0;
    int dec_offset = 0;
    double delay = 0.0;      ///< estimated delay, seconds
    double correction = 0.0; ///< correction applied, seconds

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(key("response_lookup_key", Dictionary::responses, &blk_047_t::lookup_key),
                          text("response_name", &blk_047_t::response_name),
                          number("input_sample_rate", &blk_047_t::samprate, "Hz"),
                          number("decimation_factor", &blk_047_t::dec_factor),
                          number("decimation_offset", &blk_047_t::dec_offset),
                          number("estimated_delay", &blk_047_t::delay, "s"),
                          number("correction_applied", &blk_047_t::correction, "s"));
    }
};

/// Channel Sensitivity/Gain Dictionary.
struct blk_048_t : blk_t {
    static constexpr int Number = 48;
    int lookup_key = 0;
    char response_name[26] = "";
    double gain = 0.0;
    double freq = 0.0; ///< Hz
    int num_history = 0;
    int num_history_promised = 0;
    std::vector<double> calibration_gain;
    std::vector<double> calibration_freq; ///< Hz
    std::vector<calibration_time_t> calibration_time;

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            key("response_lookup_key", Dictionary::responses, &blk_048_t::lookup_key),
            text("response_name", &blk_048_t::response_name),
            number("sensitivity_or_gain", &blk_048_t::gain),
            number("frequency", &blk_048_t::freq, "Hz"),
            limited_list("history", "number_of_history_values", &blk_048_t::num_history,
                         &blk_048_t::num_history_promised,
                         column({"sensitivity"}, &blk_048_t::calibration_gain),
                         column({"frequency", "Hz"}, &blk_048_t::calibration_freq),
                         column({"time", {}, Meaning::time}, &blk_048_t::calibration_time,
                                &calibration_time_t::text)));
    }
};

/// Generic Response.
struct blk_056_t : blk_t, channel_context_t {
    static constexpr int Number = 56;
    int stage_num = 0;
    int input_units = 0;
    int output_units = 0;
    int num_corners = 0;
    int num_corners_promised = 0;
    std::vector<double> corner_freq;  ///< Hz
    std::vector<double> corner_slope; ///< dB per decade

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            number("stage_sequence_number", &blk_056_t::stage_num),
            code("input_units", Dictionary::units, &blk_056_t::input_units),
            code("output_units", Dictionary::units, &blk_056_t::output_units),
            limited_list("corners", "number_of_corners_listed", &blk_056_t::num_corners,
                         &blk_056_t::num_corners_promised,
                         column({"corner_frequency", "Hz"}, &blk_056_t::corner_freq),
                         column({"corner_slope", "dB/decade"}, &blk_056_t::corner_slope)));
    }
};

/// Response Reference.
struct blk_060_t : blk_t, channel_context_t {
    static constexpr int Number = 60;
    struct Stage {
        int stage_num = 0;
        int num_keys_promised = 0;
        std::vector<int> lookup_key; ///< of the response dictionary, in order
    };
    int num_stages = 0;
    int num_stages_promised = 0;
    std::vector<Stage> stage;

    /// How many keys the volume promises for a stage.
    [[nodiscard]] const int &promised_codes(std::size_t i) const
    {
        return stage[i].num_keys_promised;
    }
    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(limited_list(
            "stages", "number_of_stages", &blk_060_t::num_stages, &blk_060_t::num_stages_promised,
            column({"stage_sequence_number"}, &blk_060_t::stage, &Stage::stage_num),
            column({"responses", {}, Meaning::code, Dictionary::responses, "response"},
                   &blk_060_t::stage, &Stage::lookup_key)));
    }
};

/// Time Span Identifier.
struct blk_070_t : blk_t {
    static constexpr int Number = 70;
    char span_flag = 'P';
    char beg_time[Time_Size] = "";
    char end_time[Time_Size] = "";

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(text("time_span_flag", &blk_070_t::span_flag),
                          when("beginning_time", &blk_070_t::beg_time),
                          until("end_time", &blk_070_t::end_time));
    }
};

/// Hypocenter Information.
struct blk_071_t : blk_t {
    static constexpr int Number = 71;
    static constexpr int Capacity = 20;
    char origin_time[Time_Size] = "";
    int source_id = 0;         ///< cited source
    double lat = 0.0;          ///< degrees
    double lon = 0.0;          ///< degrees
    double depth = 0.0;        ///< km
    int num_mags = 0;          ///< kept
    int num_mags_promised = 0; ///< as counted by the volume
    int num_mags_held = 0;
    double mag[Capacity] = {};
    char mag_type[Capacity][11] = {};
    int mag_source[Capacity] = {};   ///< cited source
    char span_start[Time_Size] = ""; ///< not read, stays empty
    char span_end[Time_Size] = "";   ///< not read, stays empty
    int grn = 0;                     ///< seismic region number
    int srn = 0;                     ///< seismic location number
    char gregion[41] = "";

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            when("origin_time", &blk_071_t::origin_time),
            code("hypocenter_source", Dictionary::sources, &blk_071_t::source_id),
            number("latitude", &blk_071_t::lat, "degrees"),
            number("longitude", &blk_071_t::lon, "degrees"),
            or_blank(number("depth", &blk_071_t::depth, "km")),
            limited_list("magnitudes", "number_of_magnitudes", &blk_071_t::num_mags_held,
                         &blk_071_t::num_mags_promised, column({"magnitude"}, &blk_071_t::mag),
                         column({"magnitude_type", {}, Meaning::text}, &blk_071_t::mag_type),
                         column({"magnitude_source", {}, Meaning::code, Dictionary::sources},
                                &blk_071_t::mag_source)),
            absent("span_start", &blk_071_t::span_start), absent("span_end", &blk_071_t::span_end),
            or_blank(number("seismic_region", &blk_071_t::grn)),
            or_blank(number("seismic_location", &blk_071_t::srn)),
            text("region_name", &blk_071_t::gregion));
    }
};

/// Event Phases.
struct blk_072_t : blk_t {
    static constexpr int Number = 72;
    char stn_id[Station_Size] = "";
    char loc_id[Location_Size] = "";
    char chan_id[Channel_Id_Size] = "";
    char arr_time[Time_Size] = ""; ///< arrival time of phase
    double amp = 0.0;
    double period = 0.0; ///< seconds
    double snr = 0.0;
    char phase[21] = "";
    double lat = 0.0;                ///< not read, stays 0
    double lon = 0.0;                ///< not read, stays 0
    double depth = 0.0;              ///< not read, stays 0
    char event_time[Time_Size] = ""; ///< not read, stays empty
    int source = 0;                  ///< cited source
    char network_code[Network_Size] = "";

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            text("station", &blk_072_t::stn_id), text("location", &blk_072_t::loc_id),
            text("channel", &blk_072_t::chan_id), when("arrival_time", &blk_072_t::arr_time),
            or_blank(number("amplitude", &blk_072_t::amp)),
            or_blank(number("period", &blk_072_t::period, "s")),
            or_blank(number("signal_to_noise_ratio", &blk_072_t::snr)),
            text("name_of_phase", &blk_072_t::phase), absent("latitude", &blk_072_t::lat),
            absent("longitude", &blk_072_t::lon), absent("depth", &blk_072_t::depth),
            absent("event_time", &blk_072_t::event_time),
            code("source", Dictionary::sources, &blk_072_t::source),
            text("network", &blk_072_t::network_code));
    }
};

/// Time Span Data Start Index.
struct blk_073_t : blk_t {
    static constexpr int Number = 73;
    static constexpr int Capacity = 250;
    int num_segs = 0;
    int num_segs_held = 0;
    char stn_id[Capacity][Station_Size] = {};
    char loc_id[Capacity][Location_Size] = {};
    char chan_id[Capacity][Channel_Id_Size] = {};
    char series_start_time[Capacity][Time_Size] = {};
    int seq_num[Capacity] = {};
    int sub_seq_num[Capacity] = {};

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(limited_list(
            "data_pieces", "number_of_data_pieces", &blk_073_t::num_segs_held, &blk_073_t::num_segs,
            column({"station", {}, Meaning::text}, &blk_073_t::stn_id),
            column({"location", {}, Meaning::text}, &blk_073_t::loc_id),
            column({"channel", {}, Meaning::text}, &blk_073_t::chan_id),
            column({"time_of_record", {}, Meaning::time}, &blk_073_t::series_start_time),
            column({"sequence_number"}, &blk_073_t::seq_num),
            column({"subsequence_number"}, &blk_073_t::sub_seq_num)));
    }
};

/// Time Series Index.
struct blk_074_t : blk_t {
    static constexpr int Number = 74;
    static constexpr int Capacity = 64;
    char network_code[Network_Size] = "";
    char stn_id[Station_Size] = "";
    char loc_id[Location_Size] = "";
    char chan_id[Channel_Id_Size] = "";
    char series_start_time[Time_Size] = "";
    int first_seq_num = 0;
    int first_sub_seq_num = 1;
    char series_end_time[Time_Size] = "";
    int last_seq_num = 0;
    int last_sub_seq_num = 1;
    int num_repeats = 0;          ///< accelerator repeats, kept
    int num_repeats_promised = 0; ///< as counted by the volume
    int num_repeats_held = 0;
    char rec_start_time[Capacity][Time_Size] = {};
    int req_seq_num[Capacity] = {};
    int req_sub_seq_num[Capacity] = {};

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(text("station", &blk_074_t::stn_id), text("location", &blk_074_t::loc_id),
                          text("channel", &blk_074_t::chan_id),
                          when("series_start_time", &blk_074_t::series_start_time),
                          number("first_sequence_number", &blk_074_t::first_seq_num),
                          number("first_subsequence_number", &blk_074_t::first_sub_seq_num),
                          when("series_end_time", &blk_074_t::series_end_time),
                          number("last_sequence_number", &blk_074_t::last_seq_num),
                          number("last_subsequence_number", &blk_074_t::last_sub_seq_num),
                          limited_list("accelerator_repeats", "number_of_accelerator_repeats",
                                       &blk_074_t::num_repeats_held,
                                       &blk_074_t::num_repeats_promised,
                                       column({"record_start_time", {}, Meaning::time},
                                              &blk_074_t::rec_start_time),
                                       column({"sequence_number"}, &blk_074_t::req_seq_num),
                                       column({"subsequence_number"}, &blk_074_t::req_sub_seq_num)),
                          text("network", &blk_074_t::network_code));
    }
};

/// The fixed header of one data record. Aligned, since one is cleared for each data record: a store
/// across a page's end takes 10 ns.
struct alignas(64) blk_dh_t : record_t {
    static constexpr int Number = Data_Record;
    char stn_id[Station_Size] = "";
    char loc_id[Location_Size] = "";
    char chan_id[Channel_Id_Size] = "";
    char channel[Channel_Size] = ""; ///< not filled
    char network_code[Network_Size] = "";
    char start_time[Time_Size] = ""; ///< before any time correction
    int year = 0;
    int doy = 0;
    int hour = 0;
    int minutes = 0;
    int sec_int = 0;
    int sec_frac = 0; ///< 0.0001 s, a time correction that was still to be applied included
    int length = 0;   ///< record length in bytes
    int nsamps = 0;
    int rate_f = 0;   ///< sample rate factor
    int rate_m = 1;   ///< sample rate multiplier
    int activity = 0; ///< activity flags, sign-extended like every byte of the header
    int io_flags = 0; ///< I/O and clock flags
    int quality = 0;  ///< data quality flags
    int blks_fol = 0; ///< number of blockettes that follow
    int time_cor = 0; ///< time correction, 0.0001 s
    int beg_data = 0; ///< beginning of data, bytes from the record's start
    int beg_blks = 0; ///< first blockette, bytes from the record's start
    const char *data =
        nullptr; ///< first data byte (null outside the record); until the next item is asked for
    const char *raw = nullptr;          ///< the record from its byte 0; until the next item
    double samp_rate = 0.0;             ///< samples per second
    int byteswap = 0;                   ///< -1: every multi-byte field was byte-swapped
    int encoding = -1;                  ///< encoding format code of Blockette 1000; -1 without one
    double epoch = 0.0;                 ///< start time, epoch seconds, time correction included
    char format[Format_Name_Size] = ""; ///< data format name, empty when unknown
    int seq_num = 0;
    int sub_seq_num = 0;          ///< position within the logical records of that sequence number
    int type = 0;                 ///< number of the format among those known; 0: unknown
    char quality_indicator = ' '; ///< D, R, Q or M: the type code of its logical record
    int word_order = -1;          ///< word order of Blockette 1000; -1 without one

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            text("network", &blk_dh_t::network_code), text("station", &blk_dh_t::stn_id),
            text("location", &blk_dh_t::loc_id), text("channel", &blk_dh_t::chan_id),
            absent("channel_name", &blk_dh_t::channel),
            when("record_start_time", &blk_dh_t::start_time),
            number("sample_rate", &blk_dh_t::samp_rate, "Hz"), number("samples", &blk_dh_t::nsamps),
            number("sample_rate_factor", &blk_dh_t::rate_f),
            number("sample_rate_multiplier", &blk_dh_t::rate_m),
            flags_byte("activity_flags", &blk_dh_t::activity),
            flag("calibration_signals_present", &blk_dh_t::activity, 0),
            flag("time_correction_applied", &blk_dh_t::activity, 1),
            flag("beginning_of_event", &blk_dh_t::activity, 2),
            flag("end_of_event", &blk_dh_t::activity, 3),
            flag("positive_leap_second", &blk_dh_t::activity, 4),
            flag("negative_leap_second", &blk_dh_t::activity, 5),
            flag("event_in_progress", &blk_dh_t::activity, 6),
            flags_byte("io_and_clock_flags", &blk_dh_t::io_flags),
            flag("station_volume_parity_error", &blk_dh_t::io_flags, 0),
            flag("long_record_read", &blk_dh_t::io_flags, 1),
            flag("short_record_read", &blk_dh_t::io_flags, 2),
            flag("start_of_time_series", &blk_dh_t::io_flags, 3),
            flag("end_of_time_series", &blk_dh_t::io_flags, 4),
            flag("clock_locked", &blk_dh_t::io_flags, 5),
            flags_byte("data_quality_flags", &blk_dh_t::quality),
            flag("amplifier_saturation_detected", &blk_dh_t::quality, 0),
            flag("digitizer_clipping_detected", &blk_dh_t::quality, 1),
            flag("spikes_detected", &blk_dh_t::quality, 2),
            flag("glitches_detected", &blk_dh_t::quality, 3),
            flag("missing_data_present", &blk_dh_t::quality, 4),
            flag("telemetry_synchronization_error", &blk_dh_t::quality, 5),
            flag("digital_filter_charging", &blk_dh_t::quality, 6),
            flag("time_tag_questionable", &blk_dh_t::quality, 7),
            number("number_of_blockettes_that_follow", &blk_dh_t::blks_fol),
            number("time_correction", &blk_dh_t::time_cor, "0.0001 s"),
            number("beginning_of_data", &blk_dh_t::beg_data, "bytes"),
            number("first_blockette", &blk_dh_t::beg_blks, "bytes"),
            optional("data_format", &blk_dh_t::format),
            code("encoding", Dictionary::encodings, &blk_dh_t::encoding),
            optional("word_order", &blk_dh_t::word_order),
            text("quality_indicator", &blk_dh_t::quality_indicator),
            number("subsequence_number", &blk_dh_t::sub_seq_num));
    }
};

} // namespace quarl
