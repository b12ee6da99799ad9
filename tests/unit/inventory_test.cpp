// The inventory of a composed volume, field by field, and of one file behind another.
#include "compose/files.h"
#include "compose/volume.h"
#include "platform/format.h"
#include "support/full_volume.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <quarl/inventory.h>
#include <quarl/volume.h>
#include <string>
#include <unistd.h>

using namespace quarl; // NOLINT: every test is about it

namespace
{

std::string span(double start, double end) { return time_text(start) + "-" + time_text(end); }

std::string number(double value) { return formatted<" %g">(value); }

std::string text_of(const std::vector<Comment> &comments)
{
    std::string all;
    for (const Comment &each : comments)
        all += formatted<" [%s key %d level %d]">(span(each.start, each.end), each.key, each.level);
    return all;
}

std::string text_of(const Inventory &inventory, const ChannelEpoch &e)
{
    std::string all = inventory.channel_of(e).code.text() + formatted<" %d ">(e.channel) +
                      formatted<"under %d ">(e.station_epoch) + span(e.start, e.end);
    for (const double value :
         {e.latitude, e.longitude, e.elevation, e.depth, e.azimuth, e.dip, e.sample_rate})
        all += number(value);
    all += formatted<" instrument %d units %d %d format %d length %d '%s' '%s' #%d">(
        e.instrument, e.signal_units, e.calibration_units, e.format, e.record_length, e.flags,
        e.comment, e.record);
    for (const StagePtr &stage : e.response.stages)
        for (const Part &part : stage->parts) {
            all += formatted<" stage %d">(stage->number);
            if (const auto *gain = std::get_if<Gain>(&part))
                all += number(gain->value) + number(gain->frequency);
            else if (const auto *d = std::get_if<Decimation>(&part))
                all += number(d->input_rate) + formatted<" /%d at %d">(d->factor, d->offset) +
                       number(d->delay) + number(d->correction);
            else if (const auto *filter = std::get_if<FilterPtr>(&part))
                all += " " + (*filter)->input().name + " to " + (*filter)->output().name;
        }
    return all + text_of(e.comments) + "\n";
}

std::string dictionaries(const Inventory &inventory)
{
    std::string all;
    for (const auto &[dictionary, name] : {std::pair{Dictionary::data_formats, "format"},
                                           {Dictionary::comments, "comment"},
                                           {Dictionary::sources, "source"},
                                           {Dictionary::abbreviations, "abbreviation"},
                                           {Dictionary::units, "unit"}})
        for (int code = 0; code < 20; ++code)
            if (const DictionaryEntry *entry = inventory.entry(dictionary, code)) {
                all += formatted<"%s %d '%s' '%s' family %d encoding %d #%d">(
                    name, code, entry->text, entry->description, entry->family, entry->encoding,
                    entry->record);
                for (const std::string &key : entry->keys)
                    all += " " + key;
                all += "\n";
            }
    for (const Redefinition &again : inventory.redefinitions())
        all += formatted<"redefined %d %s to %s #%d\n">(again.code, again.before, again.after,
                                                        again.record);
    return all;
}

std::string indexes(const Inventory &inventory)
{
    std::string all;
    for (const StationIndexEntry &e : inventory.station_index())
        all += formatted<"%s at %d #%d\n">(e.station, e.sequence_number, e.record);
    for (const SpanIndexEntry &e : inventory.span_index())
        all += formatted<"%s at %d #%d\n">(span(e.start, e.end), e.sequence_number, e.record);
    for (const TimeSpanHeader &e : inventory.time_spans())
        all += formatted<"span %s at %d #%d\n">(span(e.start, e.end), e.sequence_number, e.record);
    for (const SeriesIndexEntry &e : inventory.series_index())
        all += formatted<"%s %s from %d to %d #%d\n">(e.code.text(), span(e.start, e.end),
                                                      e.first_sequence_number,
                                                      e.last_sequence_number, e.record);
    return all;
}

std::string text_of(const DataChannel &c)
{
    std::string all = formatted<"%s records %d samples %d first #%d rate %g\n">(
        c.code.text(), c.records, c.samples, c.first_record, c.rate);
    for (const DataSpan &e : c.spans)
        all += formatted<" data %s %g #%d\n">(span(e.start, e.end), e.tolerance, e.record);
    for (const DataOverlap &e : c.overlapping)
        all += " twice " + span(e.start, e.end) + "\n";
    for (const auto &[name, e] : {std::pair{"overlaps", c.overlaps}, {"back", c.steps_back}})
        all += formatted<" %s %d #%d %s %s\n">(name, e.count, e.record, time_text(e.from),
                                               time_text(e.to));
    return all + " last " + span(c.last_start, c.last_end) + "\n";
}

std::string text_of(const Inventory &inventory)
{
    const VolumeIdentifier &v = inventory.volume();
    std::string all =
        formatted<"volume %g %s %d %s %s #%d\n">(v.version, span(v.start, v.end), v.record_length,
                                                 v.organisation, v.label, v.record) +
        indexes(inventory) + dictionaries(inventory);
    for (const Station &s : inventory.stations())
        all += formatted<"%s epochs %d channels %d\n">(s.code.text(), s.epochs.size(),
                                                       s.channels.size());
    for (const StationEpoch &e : inventory.station_epochs())
        all += inventory.station_of(e).code.text() + " " + span(e.start, e.end) +
               number(e.latitude) + number(e.longitude) + number(e.elevation) +
               formatted<" %d %s #%d at %d">(e.network_id, e.name, e.record, e.sequence_number) +
               text_of(e.comments) + "\n";
    for (const Channel &c : inventory.channels())
        all += formatted<"%s of %d epochs %d\n">(c.code.text(), c.station, c.epochs.size());
    for (const ChannelEpoch &e : inventory.channel_epochs())
        all += text_of(inventory, e);
    for (const DataChannel &c : inventory.data_channels())
        all += text_of(c);
    return all + formatted<"timeless %d\n">(inventory.timeless_records());
}

class InventoryOf : public testing::Test
{
protected:
    ~InventoryOf() override { std::filesystem::remove(path_); }

    void add(const std::string &bytes)
    {
        write_file(path_, bytes);
        VolumeOptions quiet;
        quiet.message = [](const Message &) {};
        Volume volume(path_, quiet);
        for (const Item &item : volume) {
            inventory_.add(item);
            if (const ChannelEpoch *epoch = inventory_.data_epoch(); item.get<blk_dh_t>())
                epochs_ +=
                    epoch ? std::to_string(epoch->record) + epoch->comment.substr(0, 1) : "-";
        }
    }

    Inventory inventory_;
    std::string epochs_; ///< of each data record
    const std::string path_ =
        std::filesystem::temp_directory_path() / ("inventory." + std::to_string(getpid()));
};

TEST_F(InventoryOf, AFullVolume)
{
    add(full_volume());
    EXPECT_EQ(text_of(inventory_), R"(volume 2.4 1999,300-2001,002,03:04:05.5000 4096 Org Label #1
QRL at 3 #1
ABC at 4 #1
2000,366-2001,001 at 5 #1
2001,002- at 6 #1
span 2000,366-2001,001 at 4 #4
XY_QRL_00_BHZ 2000,366,01:00:00.0000-2000,366,02:00:00.0000 from 5 to 6 #4
format 7 '32-Bit' '' family 0 encoding 3 #2 M0 W4 D0-31 C2
comment 11 'Station remark' '' family -1 encoding -1 #2
comment 12 'Channel remark' '' family -1 encoding -1 #2
source 13 'Author' '' family -1 encoding -1 #2
abbreviation 14 'Network name' '' family -1 encoding -1 #2
abbreviation 15 'Instrument' '' family -1 encoding -1 #2
unit 16 'M/S' 'Velocity' family -1 encoding -1 #2
unit 17 'V' 'Volts' family -1 encoding -1 #2
unit 18 'COUNTS' 'Digits' family -1 encoding -1 #2
redefined 18 A to COUNTS #2
XY_QRL epochs 1 channels 2
XY_QRL 1998,002-2009,004 46.5 8.25 1742.5 14 Quarry #3 at 3 [1999,001-1999,002 key 11 level 3]
XY_QRL_00_BHZ of 0 epochs 2
XY_QRL__LOG:3 of 0 epochs 1
XY_QRL_00_BHZ 0 under 0 1998,003-2000,366,12:00:00.0000 46.25 8.5 1700.5 42.5 12.5 -88.5 20 instrument 15 units 16 17 format 7 length 512 'CG' 'Borehole' #3 stage 1 M/S to V stage 1 1500 2 stage 2 V to COUNTS stage 2 200 /2 at 1 0.0625 0.125 stage 2 2e+06 2.25 stage 3 COUNTS to COUNTS stage 3 100 /5 at 2 0.25 0.375 stage 3 1 2 stage 0 3e+09 2.5 [1999,011-1999,012 key 12 level 4] [1999,013- key 12 level 5]
XY_QRL_00_BHZ 0 under 0 2000,366,12:00:00.0000- 0 0 0 0 0 -90 20 instrument 1 units 1 2 format 1 length 4096 'CG' '' #3
XY_QRL__LOG:3 1 under 0 2020,001- 0 0 0 0 0 -90 20 instrument 1 units 1 2 format 1 length 4096 'CG' '' #3
XY_QRL_00_BHZ records 8 samples 1600 first #5 rate 20
 data 2000,366-2000,366,00:00:25.0000 0.025 #5
 data 2000,366,00:01:00.0000-2000,366,00:01:15.0000 0.025 #8
 data 2000,366,00:02:00.0000-2000,366,00:02:10.0000 0.025 #10
 data 2000,366,00:03:00.0000-2000,366,00:03:10.0000 0.025 #11
 data 2000,366,12:00:00.0000-2000,366,12:00:10.0000 0.025 #12
 twice 2000,366,00:00:15.0000-2000,366,00:00:20.0000
 twice 2000,366,00:01:05.0000-2000,366,00:01:10.0000
 overlaps 2 #7 2000,366,00:01:10.0000 2000,366,00:01:05.0000
 back 2 #8 2000,366,00:01:05.0000 2000,366,00:01:00.0000
 last 2000,366,12:00:00.0000-2000,366,12:00:10.0000
XX_QRL__BHZ records 1 samples 100 first #13 rate 0
 overlaps 0 #0 1970,001 1970,001
 back 0 #0 1970,001 1970,001
 last 1970,001-1970,001
timeless 1
)");
}

TEST_F(InventoryOf, OneFileAfterTheOther)
{
    add(full_volume());
    const std::string expected = text_of(inventory_);
    add(VolumeBuilder().data({.b1000 = DataOnly{}}).volume());
    EXPECT_TRUE(inventory_.stations().empty());
    EXPECT_EQ(inventory_.data_channels().size(), 1);
    EXPECT_EQ(inventory_.data_epoch(), nullptr);
    inventory_.finish(); // a second time
    EXPECT_EQ(inventory_.data_channels().size(), 1);
    const Inventory taken = std::move(inventory_);
    add(full_volume());
    EXPECT_EQ(text_of(inventory_), expected);
    EXPECT_EQ(taken.data_channels().size(), 1);
}

TEST_F(InventoryOf, EpochsByTime)
{
    add(full_volume());
    const DataChannel &data = inventory_.data_channels().front();
    const auto &epochs = inventory_.channel_epochs();
    EXPECT_EQ(inventory_.epoch_at(data, epochs[0].start - 1), nullptr);
    EXPECT_EQ(inventory_.epoch_at(data, epochs[0].end - 1), &epochs[0]);
    EXPECT_EQ(inventory_.epoch_at(data, epochs[0].end), &epochs[1]);
    EXPECT_EQ(epochs_, "3B3B3B3B3B3B3B3-");
}

} // namespace
