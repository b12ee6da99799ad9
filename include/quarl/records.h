// The record types of a SEED volume.
#pragma once

#include <cstddef>
#include <vector>

namespace quarl
{

/// The dictionaries that a volume's abbreviation headers fill.
enum class Dictionary {
    none,
    data_formats,  ///< 030: data format names
    comments,      ///< 031: comment descriptions
    sources,       ///< 032: authors of cited sources
    abbreviations, ///< 033: generic abbreviations
    units,         ///< 034: unit names
};

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
};

/// Volume Station Header Index.
struct blk_011_t : blk_t {
    static constexpr int Number = 11;
    static constexpr std::size_t Slot = 6; ///< five characters and a terminator
    int num_stn = 0;
    std::vector<char> stn_id; ///< num_stn slots
    std::vector<int> seq_num; ///< logical record in which each station's header begins

    [[nodiscard]] const char *station(int i) const { return stn_id.data() + i * Slot; }
};

/// Volume Time Span Index.
struct blk_012_t : blk_t {
    static constexpr int Number = 12;
    static constexpr int Capacity = 999;
    int num_span = 0;
    char beg_span[Capacity][Time_Size] = {};
    char end_span[Capacity][Time_Size] = {};
    int seq_num[Capacity] = {};
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
    std::vector<DecodeKey> decode_key;
};

/// Comment Description.
struct blk_031_t : blk_t {
    static constexpr int Number = 31;
    int comment_id = 0; ///< comment code key
    char class_code = ' ';
    char comment[71] = "";
    int units = 0; ///< units of comment level
};

/// Cited Source Dictionary.
struct blk_032_t : blk_t {
    static constexpr int Number = 32;
    int source_id = 0;
    char author[71] = "";
    char catalog[71] = ""; ///< date published or catalogue
    char publisher[51] = "";
};

/// Generic Abbreviation.
struct blk_033_t : blk_t {
    static constexpr int Number = 33;
    int abbrev_id = 0;
    char abbrev[51] = "";
};

/// Units Abbreviation.
struct blk_034_t : blk_t {
    static constexpr int Number = 34;
    int unit_id = 0;
    char unit_name[21] = "";
    char unit_desc[51] = "";
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
    double lat = 0.0;       ///< degrees
    double lon = 0.0;       ///< degrees
    double elev = 0.0;      ///< metres
    double depth = 0.0;     ///< local depth, metres
    double azimuth = 0.0;   ///< degrees clockwise from north
    double dip = 0.0;       ///< degrees down from horizontal
    int format_id = 0;      ///< data format identifier code
    int record_length = 12; ///< data record length exponent
    double sample_rate = 0.0;
    double max_drift = 0.0; ///< maximum clock drift, seconds
    int num_comments = 0;
    char chan_flags[27] = "";
    char start_date[Time_Size] = "";
    char end_date[Time_Size] = ""; ///< empty when open
    char update = 'N';
    char station[Station_Size] = "";
    char network_code[Network_Size] = "";
    char channel[Channel_Size] = ""; ///< full name, built by fix_channel
    int changroup = 0;
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
    std::vector<Complex_t> zero;
    std::vector<Complex_t> zero_error;
    int num_poles = 0;
    std::vector<Complex_t> pole;
    std::vector<Complex_t> pole_error;
    int changroup = 0;
};

/// Response (Coefficients).
struct blk_054_t : blk_t, channel_context_t {
    static constexpr int Number = 54;
    char func_type = ' '; ///< response type
    int stage_num = 0;
    int input_units = 0;
    int output_units = 0;
    int num_numer = 0;
    std::vector<double> numer_coef;
    std::vector<double> numer_error;
    int num_denom = 0;
    std::vector<double> denom_coef;
    std::vector<double> denom_error;
    int changroup = 0;
};

/// Response List.
struct blk_055_t : blk_t, channel_context_t {
    static constexpr int Number = 55;
    int stage_num = 0;
    int input_units = 0;
    int output_units = 0;
    int num_resp = 0;
    std::vector<double> frequency; ///< Hz
    std::vector<double> amplitude;
    std::vector<double> amplitude_error;
    std::vector<double> phase; ///< degrees
    std::vector<double> phase_error;
    int changroup = 0;
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
};

/// Channel Sensitivity/Gain. The calibration history is not read.
struct blk_058_t : blk_t, channel_context_t {
    static constexpr int Number = 58;
    int stage_num = 0; ///< 0: the whole channel's sensitivity
    double gain = 0.0;
    double freq = 0.0; ///< Hz
    int units_signal = 0;
    int changroup = 0;
};

/// Channel Comment.
struct blk_059_t : blk_t, channel_context_t {
    static constexpr int Number = 59;
    char beg_time[Time_Size] = "";
    char end_time[Time_Size] = "";
    int comment_key = 0;
    int comment_level = 0;
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
    std::vector<double> coef;
    int changroup = 0;
};

/// Response (Polynomial).
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
    std::vector<double> coef;
    std::vector<double> coef_error;
    int changroup = 0;
};

/// Time Span Identifier.
struct blk_070_t : blk_t {
    static constexpr int Number = 70;
    char span_flag = 'P';
    char beg_time[Time_Size] = "";
    char end_time[Time_Size] = "";
};

/// Hypocenter Information.
struct blk_071_t : blk_t {
    static constexpr int Number = 71;
    static constexpr int Capacity = 20;
    char origin_time[Time_Size] = "";
    int source_id = 0;  ///< cited source
    double lat = 0.0;   ///< degrees
    double lon = 0.0;   ///< degrees
    double depth = 0.0; ///< km
    int num_mags = 0;
    double mag[Capacity] = {};
    char mag_type[Capacity][11] = {};
    int mag_source[Capacity] = {};   ///< cited source
    char span_start[Time_Size] = ""; ///< not read, stays empty
    char span_end[Time_Size] = "";   ///< not read, stays empty
    int grn = 0;                     ///< seismic region number
    int srn = 0;                     ///< seismic location number
    char gregion[41] = "";
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
};

/// Time Span Data Start Index.
struct blk_073_t : blk_t {
    static constexpr int Number = 73;
    static constexpr int Capacity = 250;
    int num_segs = 0;
    char stn_id[Capacity][Station_Size] = {};
    char loc_id[Capacity][Location_Size] = {};
    char chan_id[Capacity][Channel_Id_Size] = {};
    char series_start_time[Capacity][Time_Size] = {};
    int seq_num[Capacity] = {};
    int sub_seq_num[Capacity] = {};
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
    int num_repeats = 0; ///< accelerator repeats
    char rec_start_time[Capacity][Time_Size] = {};
    int req_seq_num[Capacity] = {};
    int req_sub_seq_num[Capacity] = {};
};

/// The fixed header of one data record.
struct blk_dh_t : record_t {
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
    int sec_frac = 0; ///< 0.0001 s; after fixup_dh with the time correction still to be applied
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
        nullptr; ///< first data byte (null outside the record); until the next read_blk
    const char *raw = nullptr;          ///< the record from its byte 0; until the next read_blk
    double samp_rate = 0.0;             ///< samples per second
    int byteswap = 0;                   ///< -1: every multi-byte field was byte-swapped
    double epoch = 0.0;                 ///< start time, epoch seconds, time correction included
    char format[Format_Name_Size] = ""; ///< data format name, empty when unknown
    int seq_num = 0;
    int sub_seq_num = 0; ///< position within the logical records of that sequence number
    int type = 0;        ///< row of seed_formats, 0 when the format is unknown
};

} // namespace quarl
