// The record types of data blockettes: what stands between the fixed header of a data record and
// its data.
//
// Their layouts are fixed: each type has the bytes of its blockette as `Size`, and its fields have
// the byte at which they stand. A field that a blockette is too short for keeps its default.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <quarl/binary_time.h>
#include <quarl/fields.h>
#include <string_view>
#include <vector>

namespace quarl
{

template <> inline constexpr std::size_t fields::Width<BinaryTime> = Binary_Time_Size;

struct blk_100_t {
    static constexpr int Number = 100;
    static constexpr std::string_view Name = "Sample Rate";
    static constexpr int Size = 12;
    float actual_sample_rate = 0; ///< samples per second
    std::uint8_t flags = 0;       ///< the standard defines none

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            from<4>(number("actual_sample_rate", &blk_100_t::actual_sample_rate, "Hz")),
            from<8>(number("flags", &blk_100_t::flags)));
    }
};

struct blk_200_t {
    static constexpr int Number = 200;
    static constexpr std::string_view Name = "Generic Event Detection";
    static constexpr int Size = 52;
    float signal_amplitude = 0;
    float signal_period = 0; ///< seconds
    float background_estimate = 0;
    std::uint8_t flags = 0;
    BinaryTime signal_onset_time;
    char detector_name[25] = "";

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(from<4>(number("signal_amplitude", &blk_200_t::signal_amplitude)),
                          from<8>(number("signal_period", &blk_200_t::signal_period, "s")),
                          from<12>(number("background_estimate", &blk_200_t::background_estimate)),
                          from<16>(number("event_detection_flags", &blk_200_t::flags)),
                          from<16>(flag("dilatation_wave", &blk_200_t::flags, 0)),
                          from<16>(flag("units_after_deconvolution", &blk_200_t::flags, 1)),
                          from<16>(flag("wave_undetermined", &blk_200_t::flags, 2)),
                          from<18>(when("signal_onset_time", &blk_200_t::signal_onset_time)),
                          from<28>(text("detector_name", &blk_200_t::detector_name)));
    }
};

struct blk_201_t {
    static constexpr int Number = 201;
    static constexpr std::string_view Name = "Murdock Event Detection";
    static constexpr int Size = 60;
    float signal_amplitude = 0;
    float signal_period = 0; ///< seconds
    float background_estimate = 0;
    std::uint8_t flags = 0;
    BinaryTime signal_onset_time;
    std::array<std::uint8_t, 6> signal_to_noise_ratio_values{};
    std::uint8_t lookback_value = 0;
    std::uint8_t pick_algorithm = 0;
    char detector_name[25] = "";

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(from<4>(number("signal_amplitude", &blk_201_t::signal_amplitude)),
                          from<8>(number("signal_period", &blk_201_t::signal_period, "s")),
                          from<12>(number("background_estimate", &blk_201_t::background_estimate)),
                          from<16>(number("event_detection_flags", &blk_201_t::flags)),
                          from<16>(flag("dilatation_wave", &blk_201_t::flags, 0)),
                          from<18>(when("signal_onset_time", &blk_201_t::signal_onset_time)),
                          from<28>(numbers("signal_to_noise_ratio_values",
                                           &blk_201_t::signal_to_noise_ratio_values)),
                          from<34>(number("lookback_value", &blk_201_t::lookback_value)),
                          from<35>(number("pick_algorithm", &blk_201_t::pick_algorithm)),
                          from<36>(text("detector_name", &blk_201_t::detector_name)));
    }
};

/// Log-Z Event Detection: the standard leaves its fields open.
struct blk_202_t {
    static constexpr int Number = 202;
    static constexpr std::string_view Name = "Log-Z Event Detection";
    static constexpr int Size = 4;

    static constexpr auto fields() { return quarl::fields::all_fields(); }
};

struct blk_300_t {
    static constexpr int Number = 300;
    static constexpr std::string_view Name = "Step Calibration";
    static constexpr int Size = 60;
    BinaryTime beginning_time;
    std::uint8_t number_of_steps = 0;
    std::uint8_t flags = 0;
    std::uint32_t step_duration = 0;     ///< 0.0001 s
    std::uint32_t interval_duration = 0; ///< 0.0001 s
    float amplitude = 0;
    char input_channel[4] = ""; ///< that has the calibration signal
    std::uint32_t reference_amplitude = 0;
    char coupling[13] = "";
    char rolloff[13] = "";

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            from<4>(when("beginning_of_calibration_time", &blk_300_t::beginning_time)),
            from<14>(number("number_of_step_calibrations", &blk_300_t::number_of_steps)),
            from<15>(number("calibration_flags", &blk_300_t::flags)),
            from<15>(flag("first_pulse_positive", &blk_300_t::flags, 0)),
            from<15>(flag("alternating_sign", &blk_300_t::flags, 1)),
            from<15>(flag("calibration_automatic", &blk_300_t::flags, 2)),
            from<15>(flag("calibration_continued", &blk_300_t::flags, 3)),
            from<16>(number("step_duration", &blk_300_t::step_duration, "0.0001 s")),
            from<20>(number("interval_duration", &blk_300_t::interval_duration, "0.0001 s")),
            from<24>(number("calibration_signal_amplitude", &blk_300_t::amplitude)),
            from<28>(text("channel_with_calibration_input", &blk_300_t::input_channel)),
            from<32>(number("reference_amplitude", &blk_300_t::reference_amplitude)),
            from<36>(text("coupling", &blk_300_t::coupling)),
            from<48>(text("rolloff", &blk_300_t::rolloff)));
    }
};

struct blk_310_t {
    static constexpr int Number = 310;
    static constexpr std::string_view Name = "Sine Calibration";
    static constexpr int Size = 60;
    BinaryTime beginning_time;
    std::uint8_t flags = 0;
    std::uint32_t duration = 0; ///< 0.0001 s
    float period = 0;           ///< seconds
    float amplitude = 0;
    char input_channel[4] = ""; ///< that has the calibration signal
    std::uint32_t reference_amplitude = 0;
    char coupling[13] = "";
    char rolloff[13] = "";

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            from<4>(when("beginning_of_calibration_time", &blk_310_t::beginning_time)),
            from<15>(number("calibration_flags", &blk_310_t::flags)),
            from<15>(flag("calibration_automatic", &blk_310_t::flags, 2)),
            from<15>(flag("calibration_continued", &blk_310_t::flags, 3)),
            from<15>(flag("peak_to_peak_amplitude", &blk_310_t::flags, 4)),
            from<15>(flag("zero_to_peak_amplitude", &blk_310_t::flags, 5)),
            from<15>(flag("rms_amplitude", &blk_310_t::flags, 6)),
            from<16>(number("calibration_duration", &blk_310_t::duration, "0.0001 s")),
            from<20>(number("period_of_signal", &blk_310_t::period, "s")),
            from<24>(number("amplitude_of_signal", &blk_310_t::amplitude)),
            from<28>(text("channel_with_calibration_input", &blk_310_t::input_channel)),
            from<32>(number("reference_amplitude", &blk_310_t::reference_amplitude)),
            from<36>(text("coupling", &blk_310_t::coupling)),
            from<48>(text("rolloff", &blk_310_t::rolloff)));
    }
};

struct blk_320_t {
    static constexpr int Number = 320;
    static constexpr std::string_view Name = "Pseudo-random Calibration";
    static constexpr int Size = 64;
    BinaryTime beginning_time;
    std::uint8_t flags = 0;
    std::uint32_t duration = 0; ///< 0.0001 s
    float amplitude = 0;        ///< of the steps, peak to peak
    char input_channel[4] = ""; ///< that has the calibration signal
    std::uint32_t reference_amplitude = 0;
    char coupling[13] = "";
    char rolloff[13] = "";
    char noise_type[9] = "";

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            from<4>(when("beginning_of_calibration_time", &blk_320_t::beginning_time)),
            from<15>(number("calibration_flags", &blk_320_t::flags)),
            from<15>(flag("calibration_automatic", &blk_320_t::flags, 2)),
            from<15>(flag("calibration_continued", &blk_320_t::flags, 3)),
            from<15>(flag("random_amplitudes", &blk_320_t::flags, 4)),
            from<16>(number("calibration_duration", &blk_320_t::duration, "0.0001 s")),
            from<20>(number("peak_to_peak_amplitude_of_steps", &blk_320_t::amplitude)),
            from<24>(text("channel_with_calibration_input", &blk_320_t::input_channel)),
            from<28>(number("reference_amplitude", &blk_320_t::reference_amplitude)),
            from<32>(text("coupling", &blk_320_t::coupling)),
            from<44>(text("rolloff", &blk_320_t::rolloff)),
            from<56>(text("noise_type", &blk_320_t::noise_type)));
    }
};

struct blk_390_t {
    static constexpr int Number = 390;
    static constexpr std::string_view Name = "Generic Calibration";
    static constexpr int Size = 28;
    BinaryTime beginning_time;
    std::uint8_t flags = 0;
    std::uint32_t duration = 0; ///< 0.0001 s
    float amplitude = 0;
    char input_channel[4] = ""; ///< that has the calibration signal

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            from<4>(when("beginning_of_calibration_time", &blk_390_t::beginning_time)),
            from<15>(number("calibration_flags", &blk_390_t::flags)),
            from<15>(flag("calibration_automatic", &blk_390_t::flags, 2)),
            from<15>(flag("calibration_continued", &blk_390_t::flags, 3)),
            from<16>(number("calibration_duration", &blk_390_t::duration, "0.0001 s")),
            from<20>(number("calibration_signal_amplitude", &blk_390_t::amplitude)),
            from<24>(text("channel_with_calibration_input", &blk_390_t::input_channel)));
    }
};

struct blk_395_t {
    static constexpr int Number = 395;
    static constexpr std::string_view Name = "Calibration Abort";
    static constexpr int Size = 16;
    BinaryTime end_time;

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(from<4>(when("end_of_calibration_time", &blk_395_t::end_time)));
    }
};

struct blk_400_t {
    static constexpr int Number = 400;
    static constexpr std::string_view Name = "Beam";
    static constexpr int Size = 16;
    float azimuth = 0;               ///< degrees clockwise from north
    float slowness = 0;              ///< seconds per degree
    std::uint16_t configuration = 0; ///< lookup code of a beam configuration (035)

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(from<4>(number("beam_azimuth", &blk_400_t::azimuth, "degrees")),
                          from<8>(number("beam_slowness", &blk_400_t::slowness, "s/degree")),
                          from<12>(number("beam_configuration", &blk_400_t::configuration)));
    }
};

/// Beam Delay. The beam configuration, not the blockette, says how many delays there are: these are
/// as many as fit before the next blockette, the data or the end of the record.
struct blk_405_t {
    static constexpr int Number = 405;
    static constexpr std::string_view Name = "Beam Delay";
    static constexpr int Size = 4;
    std::vector<std::uint16_t> delay_values; ///< 0.0001 s

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(from<4>(numbers("delay_values", &blk_405_t::delay_values, "0.0001 s")));
    }
};

struct blk_500_t {
    static constexpr int Number = 500;
    static constexpr std::string_view Name = "Timing";
    static constexpr int Size = 200;
    float vco_correction = 0; ///< percent of the control value
    BinaryTime time_of_exception;
    std::int8_t microseconds = 0;       ///< to be added to that time
    std::uint8_t reception_quality = 0; ///< percent
    std::uint32_t exception_count = 0;
    char exception_type[17] = "";
    char clock_model[33] = "";
    char clock_status[129] = "";

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(from<4>(number("vco_correction", &blk_500_t::vco_correction, "%")),
                          from<8>(when("time_of_exception", &blk_500_t::time_of_exception)),
                          from<18>(number("microseconds", &blk_500_t::microseconds, "0.000001 s")),
                          from<19>(number("reception_quality", &blk_500_t::reception_quality, "%")),
                          from<20>(number("exception_count", &blk_500_t::exception_count)),
                          from<24>(text("exception_type", &blk_500_t::exception_type)),
                          from<40>(text("clock_model", &blk_500_t::clock_model)),
                          from<72>(text("clock_status", &blk_500_t::clock_status)));
    }
};

struct blk_1000_t {
    static constexpr int Number = 1000;
    static constexpr std::string_view Name = "Data Only SEED";
    static constexpr int Size = 8;
    std::uint8_t encoding_format = 0;
    std::uint8_t word_order = 0;    ///< 0: little-endian, 1: big-endian
    std::uint8_t record_length = 0; ///< exponent

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(from<4>(number("encoding_format", &blk_1000_t::encoding_format)),
                          from<5>(number("word_order", &blk_1000_t::word_order)),
                          from<6>(exponent("data_record_length", &blk_1000_t::record_length)));
    }
};

struct blk_1001_t {
    static constexpr int Number = 1001;
    static constexpr std::string_view Name = "Data Extension";
    static constexpr int Size = 8;
    std::uint8_t timing_quality = 0; ///< percent
    std::int8_t microseconds = 0;    ///< to be added to the start time
    std::uint8_t frame_count = 0;    ///< of 64 bytes

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(from<4>(number("timing_quality", &blk_1001_t::timing_quality, "%")),
                          from<5>(number("microseconds", &blk_1001_t::microseconds, "0.000001 s")),
                          from<7>(number("frame_count", &blk_1001_t::frame_count)));
    }
};

/// Variable Length Opaque Data. Its texts and data stand where the record stands.
struct blk_2000_t {
    static constexpr int Number = 2000;
    static constexpr std::string_view Name = "Variable Length Opaque Data";
    static constexpr int Size = 15;
    std::uint16_t total_length = 0; ///< bytes, from the blockette's first
    std::uint16_t data_offset = 0;  ///< bytes, from the blockette's first
    std::uint32_t record_number = 0;
    std::uint8_t word_order = 0;
    std::uint8_t flags = 0;
    std::uint8_t number_of_header_fields = 0;
    std::vector<std::string_view> header_fields;
    std::string_view opaque_data;

    /// Header fields that are there.
    [[nodiscard]] int header_fields_read() const { return static_cast<int>(header_fields.size()); }
    /// Lengths, offset and count agree with each other.
    [[nodiscard]] bool is_sound() const
    {
        return data_offset >= Size && data_offset <= total_length &&
               header_fields.size() == number_of_header_fields;
    }

    static constexpr auto fields()
    {
        using namespace quarl::fields;
        return all_fields(
            from<4>(number("total_blockette_length", &blk_2000_t::total_length, "bytes")),
            from<6>(number("offset_to_opaque_data", &blk_2000_t::data_offset, "bytes")),
            from<8>(number("record_number", &blk_2000_t::record_number)),
            from<12>(number("data_word_order", &blk_2000_t::word_order)),
            from<13>(number("opaque_data_flags", &blk_2000_t::flags)),
            from<13>(flag("stream_oriented", &blk_2000_t::flags, 0)),
            from<13>(flag("not_to_be_repackaged", &blk_2000_t::flags, 1)),
            from<13>(bits<2, 2>("fragmentation", &blk_2000_t::flags)),
            from<13>(bits<4, 2>("file_information", &blk_2000_t::flags)),
            limited_list(
                "opaque_header_fields", "number_of_opaque_header_fields",
                &blk_2000_t::header_fields_read, &blk_2000_t::number_of_header_fields,
                column({"opaque_header_field", {}, Meaning::text}, &blk_2000_t::header_fields)),
            bytes("opaque_data", &blk_2000_t::opaque_data));
    }
};

} // namespace quarl
