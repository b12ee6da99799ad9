// Composes SEED volumes in memory for tests, benchmarks, fuzz seeds and the examples.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The fields of a Blockette 1000.
struct DataOnly {
    int encoding = 11;
    int word_order = 1;
    int exponent = 9; ///< the record is 2^exponent bytes long
};

/// One data record. Counts and offsets left empty are the true ones.
struct DataRecord {
    int seq = 0; ///< 0: the volume's next number
    char quality = 'D';
    std::string station = "QRL";
    std::string location = {};
    std::string channel = "BHZ";
    std::string network = "XX";
    std::string time = "2024,001,00:00:00.0000"; ///< year,day,hour:minute:second.0.0001 s
    int samples = 100;
    int rate_factor = 20;
    int rate_multiplier = 1;
    int activity = 0;
    int io_flags = 0;
    int quality_flags = 0;
    int time_correction = 0; ///< 0.0001 s
    int length = 512;        ///< bytes, whatever a Blockette 1000 says
    bool little = false;     ///< byte order of the header and its blockettes
    std::optional<DataOnly> b1000 = {};
    std::optional<int> timing_quality = {}; ///< adds a Blockette 1001
    std::optional<float> actual_rate = {};  ///< adds a Blockette 100
    /// Further blockettes: their types, and their fields behind type and offset of the next, as
    /// "u2:7/i1:-7/f4:1.5/t:2024,001,00:00:00.0000/a24:text/z3": numbers without and with a sign,
    /// of so many bytes, reals, times, texts filled with blanks, and zeros.
    std::vector<std::pair<int, std::string>> blockettes = {};
    std::optional<int> num_blockettes = {};
    std::optional<int> begin_data = {};
    std::optional<int> first_blockette = {};
    std::string payload = {}; ///< repeated to the record's end; zeros when empty
};

/// The record's bytes, `seq` being its sequence number.
std::string data_record_bytes(const DataRecord &record, int seq);

/// Writes a volume front to back. Control blockettes run on over logical records; a prefix that
/// does not fit into a record's rest starts the next one. Every call returns the builder.
class VolumeBuilder
{
public:
    explicit VolumeBuilder(int record_length = 4096) : record_length_(record_length) {}

    /// Length of the logical records from the next one on.
    VolumeBuilder &records(int length);
    /// The next blockette starts a new record with this type letter (V, A, S or T).
    VolumeBuilder &header(char type);
    /// Number of the next record.
    VolumeBuilder &sequence(int number);
    /// These six characters instead of the next record's number.
    VolumeBuilder &sequence_text(std::string six);

    /// A control blockette; `fields` is what follows type and length.
    VolumeBuilder &blockette(int type, std::string_view fields);
    /// The same with these length digits, true or not.
    VolumeBuilder &blockette(int type, std::string_view length, std::string_view fields);
    /// Characters wrapped over control records as a blockette's are.
    VolumeBuilder &text(std::string_view characters);
    /// Fills the current record with blanks, then adds `blank_records` records of blanks.
    VolumeBuilder &pad(int blank_records = 0);

    VolumeBuilder &data(const DataRecord &record);
    /// Bytes outside of any record.
    VolumeBuilder &raw(std::string_view bytes);
    /// Drops the last `count` bytes of the file.
    VolumeBuilder &cut(std::size_t count);
    /// Keeps the first `size` bytes of the file.
    VolumeBuilder &truncate(std::size_t size);
    /// Begins the next input file; its records are numbered from 1.
    VolumeBuilder &next_file();

    /// The number that the next record will have.
    [[nodiscard]] int next_sequence() const { return next_sequence_; }
    /// The input files so far, their last records padded.
    const std::vector<std::string> &files();
    /// All files in a row.
    std::string volume();

private:
    [[nodiscard]] std::size_t room() const { return record_end_ - files_.back().size(); }
    void begin_record(char continuation);

    int record_length_;
    char type_ = 'V';
    int next_sequence_ = 1;
    std::string sequence_text_;
    std::size_t record_end_ = 0; ///< the file's size when no record is open
    std::vector<std::string> files_ = {""};
};
