// The descriptions of fields: every field of every type gets a value of its own in the volume and
// is found under its name, in the standard's order.
#include "blockette/blockette.h"
#include "blockette/chain.h"
#include "blockette/data_header.h"
#include "platform/format.h"
#include "platform/text.h"
#include "support/capture.h"
#include "support/recipe.h"
#include "volume/fixup_dh.h"

#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace
{

template <std::integral T> std::string shown(T value) { return std::to_string(value); }
std::string shown(char value) { return {value}; }
std::string shown(double value)
{
    std::ostringstream text;
    text << value;
    return text.str();
}
std::string shown(const BinaryTime &t)
{
    return formatted<"%d,%d,%d:%d:%d.%04d">(t.year, t.day_of_year, t.hour, t.minute, t.second,
                                            t.fraction);
}
template <class Values>
requires requires(Values values) { values.data(); }
std::string shown(const Values &values)
{
    if constexpr (std::is_convertible_v<Values, std::string_view>)
        return std::string(values);
    std::string text;
    for (const auto value : values)
        text += (text.empty() ? "" : "+") + std::to_string(value);
    return text;
}

template <class Field, class T>
requires(!Field::Is_List) std::string described_field(const Field &field, const T &record)
{
    return "=" + shown(field.value(record));
}

template <class List, class T>
requires(List::Is_List) std::string described_field(const List &list, const T &record)
{
    std::string all = ":" + shown(list.promised(record));
    const auto describe = [&](const auto &column, std::size_t i) {
        all += " " + std::string(column.name) + "=" + shown(column.value(record, i));
    };
    for (std::size_t i = 0; i < list.size(record); ++i)
        fields::for_each(list.columns, [&](const auto &column) { describe(column, i); });
    return all;
}

/// "name=value name=value list:count name=value ..." of all fields that parsers fill.
template <class T> std::string described(const T &record)
{
    std::string all;
    for_each_field<T>([&](const auto &field) {
        if (field.meaning != Meaning::absent)
            all +=
                (all.empty() ? "" : " ") + std::string(field.name) + described_field(field, record);
    });
    return all;
}

std::string described(int type, std::string_view fields)
{
    const std::string text =
        formatted<"%03d%04d">(type, static_cast<int>(fields.size()) + 7) + std::string(fields);
    std::string all;
    with_any_family(type, [&](auto family) {
        const auto record = family.make();
        family.parse(record.get(), text);
        if constexpr (requires { read_whole(record.get(), text); })
            read_whole(record.get(), text);
        all = described(*record);
        EXPECT_EQ(parsing().fields_size, text.size()) << type;
    });
    EXPECT_EQ(parsing().Bad_blkflag, 0) << type;
    return all;
}

/// A real of 12 characters.
std::string r(int value) { return formatted<"%12d">(value); }

const std::string Units = "input_units=11 output_units=12";
const std::string Roots = "zeros:1 real=21 imaginary=22 real_error=23 imaginary_error=24 "
                          "poles:1 real=25 imaginary=26 real_error=27 imaginary_error=28";
const std::string Roots_Text =
    "001" + r(21) + r(22) + r(23) + r(24) + "001" + r(25) + r(26) + r(27) + r(28);
const std::string Coefficients =
    "numerators:1 coefficient=21 error=22 denominators:1 coefficient=23 error=24";
const std::string Coefficients_Text = "0001" + r(21) + r(22) + "0001" + r(23) + r(24);
const std::string List =
    "responses:1 frequency=21 amplitude=22 amplitude_error=23 phase_angle=24 phase_error=25";
const std::string List_Text = "0001" + r(21) + r(22) + r(23) + r(24) + r(25);
const std::string Comment = "beginning_effective_time=t1 end_effective_time=t2 comment=3 "
                            "comment_level=4";
const std::string Decimation = "input_sample_rate=5 decimation_factor=6 decimation_offset=7 "
                               "estimated_delay=8 correction_applied=9";
const std::string Decimation_Text = "         5    6    7          8          9";

TEST(Fields, NameEveryValueInOrder)
{
    const struct {
        int type;
        std::string fields, described;
    } cases[] = {
        {10, " 2.412t1~t2~t3~org~lab~",
         "version_of_format=2.4 logical_record_length=12 beginning_time=t1 end_time=t2 "
         "volume_time=t3 originating_organization=org label=lab"},
        {11, "002AAA  000003BBB  000004",
         "stations:2 station=AAA sequence_number=3 station=BBB sequence_number=4"},
        {12, "0001t1~t2~000003", "spans:1 beginning_of_span=t1 end_of_span=t2 sequence_number=3"},
        {30, "name~000105002k1~k2~",
         "short_descriptive_name=name data_format_identifier_code=1 data_family_type=50 "
         "decoder_keys:2 decoder_key=k1 decoder_key=k2"},
        {31, "0001Ctext~003",
         "comment_code_key=1 comment_class_code=C description_of_comment=text "
         "units_of_comment_level=3"},
        {32, "01author~date~publisher~",
         "source_lookup_code=1 name_of_publication_or_author=author "
         "date_published_or_catalog=date publisher_name=publisher"},
        {33, "001text~", "abbreviation_lookup_code=1 abbreviation_description=text"},
        {34, "001name~text~", "unit_lookup_code=1 unit_name=name unit_description=text"},
        {41, "0001name~B011012000300000000000021            22",
         "response_lookup_key=1 response_name=name symmetry_code=B " + Units +
             " coefficients:3 coefficient=21 coefficient=22"},
        {43, "0001name~A011012" + r(5) + r(6) + Roots_Text,
         "response_lookup_key=1 response_name=name transfer_function_type=A " + Units +
             " a0_normalization_factor=5 normalization_frequency=6 " + Roots},
        {44, "0001name~D011012" + Coefficients_Text,
         "response_lookup_key=1 response_name=name response_type=D " + Units + " " + Coefficients},
        {45, "0001name~011012" + List_Text,
         "response_lookup_key=1 response_name=name " + Units + " " + List},
        {46, "0001name~0110120001" + r(21) + r(22),
         "response_lookup_key=1 response_name=name " + Units +
             " corners:1 corner_frequency=21 corner_slope=22"},
        {47, "0001name~" + Decimation_Text,
         "response_lookup_key=1 response_name=name " + Decimation},
        {48, "0001name~" + r(5) + r(6) + "01" + r(7) + r(8) + "t9~",
         "response_lookup_key=1 response_name=name sensitivity_or_gain=5 frequency=6 history:1 "
         "sensitivity=7 frequency=8 time=t9"},
        {50, "AAA           2          3      40001002site~005321001t1~t2~UNN",
         "station=AAA latitude=2 longitude=3 elevation=4 site_name=site network_identifier=5 "
         "word_order_32_bit=3210 word_order_16_bit=1 start_effective_date=t1 "
         "end_effective_date=t2 update_flag=U network=NN"},
        {51, "t1~t2~0003000004", Comment},
        {52,
         "00BHZ0001002text~003004         5          6      7    8    9   100011" +
             std::string("12        13        140015CG~t1~t2~U"),
         "location=00 channel=BHZ subchannel=1 instrument=2 optional_comment=text signal_units=3 "
         "calibration_units=4 latitude=5 longitude=6 elevation=7 local_depth=8 azimuth=9 dip=10 "
         "data_format=11 data_record_length=12 data_record_length_as_read=12 sample_rate=13 "
         "max_clock_drift=14 number_of_comments=15 channel_flags=CG start_date=t1 end_date=t2 "
         "update_flag=U"},
        {53, "A01011012" + r(5) + r(6) + Roots_Text,
         "transfer_function_type=A stage_sequence_number=1 " + Units +
             " a0_normalization_factor=5 normalization_frequency=6 " + Roots},
        {54, "D01011012" + Coefficients_Text,
         "response_type=D stage_sequence_number=1 " + Units + " " + Coefficients},
        {55, "01011012" + List_Text, "stage_sequence_number=1 " + Units + " " + List},
        {56, "010110120001" + r(21) + r(22),
         "stage_sequence_number=1 " + Units + " corners:1 corner_frequency=21 corner_slope=22"},
        {57, "01" + Decimation_Text, "stage_sequence_number=1 " + Decimation},
        {58, "01" + r(5) + r(6) + "01" + r(7) + r(8) + "t9~",
         "stage_sequence_number=1 sensitivity_or_gain=5 frequency=6 history:1 sensitivity=7 "
         "frequency=8 time=t9"},
        {59, "t1~t2~0003000004", Comment},
        {60, "0201020003000402010005",
         "stages:2 stage_sequence_number=1 responses=3+4 stage_sequence_number=2 "
         "responses=5"},
        {61, "01name~B0110120001            21",
         "stage_sequence_number=1 response_name=name symmetry_code=B " + Units +
             " coefficients:1 coefficient=21"},
        {62, "P01011012MB" + r(5) + r(6) + r(7) + r(8) + r(9) + "001" + r(21) + r(22),
         "transfer_function_type=P stage_sequence_number=1 " + Units +
             " polynomial_approximation_type=M valid_frequency_units=B "
             "lower_valid_frequency_bound=5 upper_valid_frequency_bound=6 "
             "lower_bound_of_approximation=7 upper_bound_of_approximation=8 "
             "maximum_absolute_error=9 coefficients:1 coefficient=21 error=22"},
        {70, "Et1~t2~", "time_span_flag=E beginning_time=t1 end_time=t2"},
        {71, "t1~02         3          4      501    6ty~07008   9region~",
         "origin_time=t1 hypocenter_source=2 latitude=3 longitude=4 depth=5 magnitudes:1 "
         "magnitude=6 magnitude_type=ty magnitude_source=7 seismic_region=8 seismic_location=9 "
         "region_name=region"},
        {72, "AAA  00BHZt1~         2         3         4name~05NN",
         "station=AAA location=00 channel=BHZ arrival_time=t1 amplitude=2 period=3 "
         "signal_to_noise_ratio=4 name_of_phase=name source=5 network=NN"},
        {73, "0001AAA  00BHZt1~00000203",
         "data_pieces:1 station=AAA location=00 channel=BHZ time_of_record=t1 sequence_number=2 "
         "subsequence_number=3"},
        {74, "AAA  00BHZt1~00000203t4~00000506001t7~00000809NN",
         "station=AAA location=00 channel=BHZ series_start_time=t1 first_sequence_number=2 "
         "first_subsequence_number=3 series_end_time=t4 last_sequence_number=5 "
         "last_subsequence_number=6 accelerator_repeats:1 record_start_time=t7 "
         "sequence_number=8 subsequence_number=9 network=NN"},
    };
    std::set<int> seen;
    for (const auto &[type, fields, expected] : cases) {
        EXPECT_EQ(described(type, fields), expected) << "B" << type;
        seen.insert(type);
    }
    for (int type = 0; type < 500; ++type)
        EXPECT_EQ(with_any_family(type, [](auto /*family*/) {}), seen.contains(type)) << type;
}

TEST(Fields, NameTheValuesOfADataRecord)
{
    const std::string bytes =
        parse_recipe("data sta=AAA loc=00 chan=BHZ net=NN time=2001,060,01:02:03.0004 samples=5 "
                     "rate=6,7 activity=8 io=9 flags=10 correction=11 blockettes=12 begin=64 "
                     "first=48")
            .volume();
    const auto header = new_dh();
    parse_dh(header.get(), std::string_view(bytes).substr(8, 128));
    fix_dh(header.get(), 0, 0);
    copy_text(header->format, "fmt");
    header->length = 512;
    header->quality_indicator = 'Q';
    header->encoding = 13;
    header->word_order = 1;
    EXPECT_EQ(described(*header),
              "network=NN station=AAA location=00 channel=BHZ "
              "record_start_time=2001,060,01:02:03.0004 sample_rate=42 samples=5 "
              "sample_rate_factor=6 sample_rate_multiplier=7 "
              "activity_flags=8 calibration_signals_present=0 time_correction_applied=0 "
              "beginning_of_event=0 end_of_event=1 positive_leap_second=0 negative_leap_second=0 "
              "event_in_progress=0 "
              "io_and_clock_flags=9 station_volume_parity_error=1 long_record_read=0 "
              "short_record_read=0 start_of_time_series=1 end_of_time_series=0 clock_locked=0 "
              "data_quality_flags=16 amplifier_saturation_detected=0 "
              "digitizer_clipping_detected=0 spikes_detected=0 glitches_detected=0 "
              "missing_data_present=1 telemetry_synchronization_error=0 "
              "digital_filter_charging=0 time_tag_questionable=0 "
              "number_of_blockettes_that_follow=12 time_correction=11 beginning_of_data=64 "
              "first_blockette=48 data_format=fmt encoding=13 word_order=1 quality_indicator=Q "
              "subsequence_number=0");
}

const std::string Calibration = " beginning_of_calibration_time=2024,61,1:2:3.0004 ";
const std::string Event = "signal_amplitude=1.5 signal_period=0.25 background_estimate=-2 "
                          "event_detection_flags=";

TEST(Fields, NameTheValuesOfDataBlockettes)
{
    // Flags have one bit set each, so that none stands for another.
    const std::pair<std::string, std::string> cases[] = {
        {"100/f4:0.1/u1:9/z3", "actual_sample_rate=0.1 flags=9"},
        {"200/f4:1.5/f4:0.25/f4:-2/u1:2/z1/t:2024,061,01:02:03.0004/a24:Name",
         Event + "2 dilatation_wave=0 units_after_deconvolution=1 wave_undetermined=0 "
                 "signal_onset_time=2024,61,1:2:3.0004 detector_name=Name"},
        {"201/f4:1.5/f4:0.25/f4:-2/u1:1/z1/t:2024,061,01:02:03.0004/u1:1/u1:2/u1:3/u1:4/u1:5/"
         "u1:255/u1:7/u1:8/a24:123456789012345678901234",
         Event + "1 dilatation_wave=1 signal_onset_time=2024,61,1:2:3.0004 "
                 "signal_to_noise_ratio_values=1+2+3+4+5+255 lookback_value=7 pick_algorithm=8 "
                 "detector_name=123456789012345678901234"},
        {"202", ""},
        {"300/t:2024,061,01:02:03.0004/u1:200/u1:2/u4:5/u4:4000000000/f4:2.5/a3:BCZ/z1/u4:7/a12:C/"
         "a12:R",
         Calibration.substr(1) +
             "number_of_step_calibrations=200 calibration_flags=2 first_pulse_positive=0 "
             "alternating_sign=1 calibration_automatic=0 calibration_continued=0 step_duration=5 "
             "interval_duration=4000000000 calibration_signal_amplitude=2.5 "
             "channel_with_calibration_input=BCZ reference_amplitude=7 coupling=C rolloff=R"},
        {"310/t:2024,061,01:02:03.0004/z1/u1:32/u4:6/f4:0.5/f4:2.5/a3:BCZ/z1/u4:7/a12:C/a12:R",
         Calibration.substr(1) +
             "calibration_flags=32 calibration_automatic=0 calibration_continued=0 "
             "peak_to_peak_amplitude=0 zero_to_peak_amplitude=1 rms_amplitude=0 "
             "calibration_duration=6 period_of_signal=0.5 amplitude_of_signal=2.5 "
             "channel_with_calibration_input=BCZ reference_amplitude=7 coupling=C rolloff=R"},
        {"320/t:2024,061,01:02:03.0004/z1/u1:8/u4:6/f4:2.5/a3:BCZ/z1/u4:7/a12:C/a12:R/a8:Noise",
         Calibration.substr(1) +
             "calibration_flags=8 calibration_automatic=0 calibration_continued=1 "
             "random_amplitudes=0 calibration_duration=6 peak_to_peak_amplitude_of_steps=2.5 "
             "channel_with_calibration_input=BCZ reference_amplitude=7 coupling=C rolloff=R "
             "noise_type=Noise"},
        {"390/t:2024,061,01:02:03.0004/z1/u1:4/u4:6/f4:2.5/a3:BCZ/z1",
         Calibration.substr(1) +
             "calibration_flags=4 calibration_automatic=1 calibration_continued=0 "
             "calibration_duration=6 calibration_signal_amplitude=2.5 "
             "channel_with_calibration_input=BCZ"},
        {"395/t:2024,061,01:02:03.0004/z2", "end_of_calibration_time=2024,61,1:2:3.0004"},
        {"400/f4:359.5/f4:0.25/u2:65535/z2",
         "beam_azimuth=359.5 beam_slowness=0.25 beam_configuration=65535"},
        {"405/u2:1/u2:65535/u2:0 begin=58", "delay_values=1+65535+0"},
        {"500/f4:99.5/t:2024,061,01:02:03.0004/i1:-50/u1:200/u4:4000000000/a16:E/a32:M/a128:S",
         "vco_correction=99.5 time_of_exception=2024,61,1:2:3.0004 microseconds=-50 "
         "reception_quality=200 exception_count=4000000000 exception_type=E clock_model=M "
         "clock_status=S"},
        {"1000/u1:11/u1:1/u1:9/z1", "encoding_format=11 word_order=1 data_record_length=9"},
        {"1001/u1:100/i1:-50/u1:9/u1:200", "timing_quality=100 microseconds=-50 frame_count=200"},
        {"2000/u2:25/u2:22/u4:4000000000/u1:1/u1:38/u1:2/a7:a~bcde~/a3:xyz/a9:behind",
         "total_blockette_length=25 offset_to_opaque_data=22 record_number=4000000000 "
         "data_word_order=1 opaque_data_flags=38 stream_oriented=0 not_to_be_repackaged=1 "
         "fragmentation=1 file_information=2 opaque_header_fields:2 opaque_header_field=a "
         "opaque_header_field=bcde opaque_data=xyz"},
    };
    for (const auto &[fields, expected] : cases)
        for (const char *order : {"big", "little"}) {
            const std::string bytes =
                parse_recipe(formatted<"data order=%s blk=%s">(order, fields)).volume();
            const auto header = new_dh();
            parse_dh(header.get(), std::string_view(bytes).substr(8, 128));
            DataBlockettes chain;
            read_chain(*header, bytes, &chain);
            ASSERT_EQ(chain.list.size(), 1) << fields;
            EXPECT_EQ(chain.remark, "") << fields;
            EXPECT_EQ(chain.list[0].type, std::stoi(fields));
            const auto describe = [](const auto &record) -> std::string {
                if constexpr (std::is_same_v<decltype(record), const std::monostate &>)
                    return "nothing";
                else
                    return described(record);
            };
            EXPECT_EQ(std::visit(describe, chain.list[0].record), expected) << fields;
        }
    EXPECT_EQ(std::size(cases), std::variant_size_v<decltype(DataBlockette::record)> - 1);
}

} // namespace
