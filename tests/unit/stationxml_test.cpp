// Headers as StationXML: what becomes of each field, what is told, several volumes as one document,
// texts that would break one.
#include "support/check.h" // in front of what uses the whole namespace

#include "compose/files.h"
#include "platform/xml_text.h"
#include "programs/stationxml.h"
#include "support/capture.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <numbers>
#include <set>
#include <sstream>

namespace
{

namespace fs = std::filesystem;

/// A folder of this process with volumes.
class Folder
{
public:
    Folder() : path_(fs::temp_directory_path() / ("stationxml-" + std::to_string(getpid())))
    {
        fs::create_directory(path_);
    }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;
    ~Folder() { fs::remove_all(path_); }

    [[nodiscard]] std::string at(const std::string &name) const { return path_ / name; }
    std::string add(const std::string &name, const std::string &bytes) const
    {
        ::write_file(at(name), bytes);
        return at(name);
    }

private:
    fs::path path_;
};

/// What a run has written, without the blanks between elements, and its status.
struct Written {
    std::string xml;
    std::string said;
    std::string names; ///< of the remarks, each once
    int status = -1;
};

Written carry(StationXmlRun run)
{
    Written written;
    const Captured captured =
        capture([&] { written.status = run_stationxml(Test_Console, std::move(run)); });
    std::istringstream lines(captured.out);
    for (std::string line; std::getline(lines, line);)
        written.xml += line.substr(std::min(line.find_first_not_of(' '), line.size()));
    written.said = captured.err;
    std::set<std::string> names;
    std::istringstream said(captured.err);
    for (std::string line; std::getline(said, line);)
        if (line.ends_with(']'))
            names.insert(line.substr(line.rfind('[') + 1, line.size() - line.rfind('[') - 2));
    for (const std::string &name : names)
        written.names += (written.names.empty() ? "" : " ") + name;
    return written;
}

Written carry(const SoundVolume &volume, CarryOptions options = {})
{
    const Folder folder;
    return carry({.volumes = {folder.add("V", volume.bytes())}, .options = std::move(options)});
}

std::string number(double value)
{
    std::string text;
    xml::append_number(&text, value);
    return text;
}

/// An edit of a sound volume, what stands in the document for it ("!" in front: does not), and the
/// names of the remarks.
struct Carried {
    const char *what;
    void (*edit)(SoundVolume &);
    std::vector<std::string> parts;
    const char *names = "";
};

/// Puts `text` where the blockette's text has `old`.
void replace(std::string *blockette, const std::string &old, const std::string &text)
{
    blockette->replace(blockette->find(old), old.size(), text);
}

std::string polynomial(int stage)
{
    std::string text = b062({.stage = stage,
                             .output_units = 3,
                             .frequency_units = 'A',
                             .upper_frequency = 6.283185307179586,
                             .coefficients = {{1, 0}, {4, .5}}});
    return text.replace(71, 4, "002"); // three characters, as writers have it
}

const Carried Cases[] = {
    {"a sound volume",
     [](SoundVolume &) {},
     {"<?xml version=\"1.0\" encoding=\"UTF-8\"?><FDSNStationXML ", "<Source>Org</Source>",
      "<Network code=\"XX\"><Description>Test network</Description><Station code=\"QRL\" ",
      "startDate=\"2020-01-01T00:00:00Z\"><Latitude>0</Latitude>",
      "<Site><Name>Test site</Name></Site><Channel code=\"BHZ\" ",
      "startDate=\"2020-01-01T00:00:00Z\" locationCode=\"\">",
      "<Dip>-90</Dip><Type>CONTINUOUS</Type><Type>GEOPHYSICAL</Type><SampleRate>20</SampleRate>",
      "<CalibrationUnits><Name>V</Name>",
      "<InstrumentSensitivity><Value>1e+05</Value><Frequency>1</Frequency><InputUnits>",
      "<Name>M/S</Name>", "<NormalizationFactor>6.2839</NormalizationFactor>",
      "<Stage number=\"2\"><Coefficients><InputUnits><Name>V</Name>",
      "<Symmetry>ODD</Symmetry><NumeratorCoefficient i=\"1\">0.25</NumeratorCoefficient>",
      "<Decimation><InputSampleRate>80</InputSampleRate><Factor>4</Factor><Offset>0</Offset>"}},
    {"times, orientation and flags",
     [](SoundVolume &v) {
         v.channels[0].start = "2020,060,12:00:60.0001";
         v.channels[0].end = "2599,365";
         v.channels[0].azimuth = 360;
         v.channels[0].dip = -91;
         v.channels[0].flags = "CXC B";
         v.channels[0].drift = 1e-5;
         v.stations[0].end = "2499,001,01";
     },
     {"endDate=\"2499-01-01T01:00:00Z\"",
      "<Channel code=\"BHZ\" startDate=\"2020-02-29T12:01:00.0001Z\" locationCode=\"\">",
      "<Azimuth>0</Azimuth><Type>CONTINUOUS</Type><Type>BEAM</Type>",
      "<ClockDrift>1e-05</ClockDrift>", "!<Dip>"},
     "bad-value"},
    {"comments with levels, times and no text",
     [](SoundVolume &v) {
         v.response.insert(v.response.begin(), {59, b059("2020,001", "2600,001", 1, 3)});
         v.response.insert(v.response.begin(), {59, b059("", "2021,001", 7, 0)});
     },
     {"<Comment id=\"1\" subject=\"S\"><Value>Clock locked (level 3)</Value>"
      "<BeginEffectiveTime>2020-01-01T00:00:00Z</BeginEffectiveTime></Comment><Latitude>",
      "!id=\"7\""},
     "comment-undefined"},
    {"texts that would break a document",
     [](SoundVolume &v) {
         v.stations[0].name = "<a b=\"c\"> & ]]> \xe9";
         v.channels[0].comment = "ctl \x01\x1f";
         v.dictionaries[2].second = b033(1, "\xc3\xa9 --> '");
     },
     {"<Name>&lt;a b=&quot;c&quot;&gt; &amp; ]]&gt; \xc3\xa9</Name>",
      "<Description>ctl \xEF\xBF\xBD\xEF\xBF\xBD</Description>",
      "<Description>\xc3\xa9 --&gt; '</Description>"},
     "text-replaced"},
    {"errors, both ways and none",
     [](SoundVolume &v) {
         v.response[0].second =
             b053({.zeros = {{0, 0}}, .poles = {{-1, 1, -.25, 0}, {-1, -1, 0, .5}}});
     },
     {"<Zero number=\"0\"><Real>0</Real>",
      "<Pole number=\"0\"><Real plusError=\"0.25\" minusError=\"0.25\">-1</Real><Imaginary>1<",
      "<Pole number=\"1\"><Real>-1</Real><Imaginary plusError=\"0.5\" minusError=\"0.5\">-1<"}},
    {"a list in two blockettes, with phases beyond a turn",
     [](SoundVolume &v) {
         v.response = {{55, b055(1, 1, 2, {{1, 2, .5, 370, 0}})},
                       {55, b055(1, 1, 2, {{2, 3, 0, -725, 1}})},
                       {58, b058(1, 7, 1)}};
     },
     {"<Frequency>1</Frequency><Amplitude plusError=\"0.5\" minusError=\"0.5\">2</Amplitude>"
      "<Phase>10</Phase></ResponseListElement><ResponseListElement><Frequency>2</Frequency>"
      "<Amplitude>3</Amplitude><Phase plusError=\"1\" minusError=\"1\">-5</Phase>",
      "!<InstrumentSensitivity>"}},
    {"stages out of order, and one of two filters",
     [](SoundVolume &v) {
         std::rotate(v.response.begin(), v.response.begin() + 5, v.response.end() - 1);
         v.response.push_back({53, b053({.stage = 2, .input_units = 3, .output_units = 3})});
     },
     {"<Stage number=\"1\"><PolesZeros>", "<Stage number=\"2\"><Coefficients>",
      "<StageGain><Value>1</Value><Frequency>0</Frequency></StageGain></Stage><Stage number=\"3\">"
      "<PolesZeros>",
      "<Stage number=\"4\"><FIR>"}},
    {"polynomial of a stage, its decimation and gain without a place",
     [](SoundVolume &v) {
         v.response = {{62, polynomial(1)}, {58, b058(1, 3, 0)}, {58, b058(2, 2, 0)}};
     },
     {"<InstrumentPolynomial><InputUnits><Name>M/S</Name>",
      "<FrequencyUpperBound>" + number(6.28319 / (2 * std::numbers::pi)) +
          "</FrequencyUpperBound><ApproximationLowerBound>0</"
          "ApproximationLowerBound><ApproximationUpperBound>2</ApproximationUpperBound>",
      "<Coefficient number=\"1\" plusError=\"0.25\" minusError=\"0.25\">2</Coefficient>"
      "</InstrumentPolynomial>",
      "<Coefficient number=\"1\" plusError=\"0.5\" minusError=\"0.5\">4</Coefficient></Polynomial>"
      "</Stage>"},
     "no-place"},
    {"references, one of them to nothing",
     [](SoundVolume &v) {
         v.dictionaries.push_back({41, std::string("0001Named~B0030030002+2.5000000E-01"
                                                   "+5.0000000E-01")});
         v.dictionaries.push_back({47, std::string("0002R~8.0000E+01    4    0 0.0000E+00 0.0000"
                                                   "E+00")});
         v.response[5] = {60, "02030200010002040100"
                              "09"};
         v.response.erase(v.response.begin() + 6);
     },
     {"<Stage number=\"3\"><FIR name=\"Named\">", "<Factor>4</Factor>", "!<Stage number=\"4\">"},
     "response-part"},
    {"a unit without a name is the neighbour's",
     [](SoundVolume &v) { v.response[2].second = b054({.stage = 2, .input_units = 9}); },
     {"<Stage number=\"2\"><Coefficients><InputUnits><Name>V</Name>"},
     "response-part"},
    {"delay and correction, filters of two symmetries",
     [](SoundVolume &v) {
         v.response[6].second = b057(3, 80, 4, 1, .25, .5);
         v.response.push_back({61, b061({.stage = 3, .coefficients = {1}})});
     },
     {"<Offset>1</Offset><Delay>0.25</Delay><Correction>0.5</Correction></Decimation>",
      "<Stage number=\"4\"><FIR>"}},
    {"one stage without gain has that of the channel",
     [](SoundVolume &v) {
         v.response = {{53, b053({.poles = {{-1, 0}}})}, {58, b058(0, 7, .5)}};
     },
     {"<StageGain><Value>7</Value><Frequency>0.5</Frequency>"}},
    {"no response, no network, no site",
     [](SoundVolume &v) {
         v.response.clear();
         v.stations[0].network = "  ";
         v.stations[0].name = "";
     },
     {"<Network code=\"XX\">", "<Name></Name>", "<Response/>"},
     "network-missing"},
    {"a latitude that is no number",
     [](SoundVolume &v) {
         v.channels.push_back(v.channels[0]);
         v.channels[1].channel = "BHN";
         v.edit = [](std::string bytes) {
             const std::size_t at = bytes.find("BHZ", bytes.find("052011"));
             return bytes.replace(bytes.find('~', at) + 7, 10, "##########");
         };
     },
     {"!<Channel code=\"BHZ\"", "<Channel code=\"BHN\""},
     "bad-real bad-value blockette-bad"},
    {"a latitude out of range takes the channels along",
     [](SoundVolume &v) { v.stations[0].lat = 90; },
     {"!<Station"},
     "bad-value"},
    {"a gain that is no number",
     [](SoundVolume &v) { replace(&v.response[1].second, "1.00000E+03", "x.00000E+03"); },
     {"!<Stage ", "<InstrumentSensitivity><Value>1e+05</Value>", "</Response></Channel>"},
     "bad-real blockette-bad response-lost"},
    {"a filter that there is no word for",
     [](SoundVolume &v) { v.response[0].second[0] = 'C'; },
     {"!<Stage ", "<InstrumentSensitivity>"},
     "response-lost"},
};

TEST(StationXml, FieldsHaveTheirPlaces)
{
    for (const Carried &each : Cases) {
        SCOPED_TRACE(each.what);
        SoundVolume volume;
        each.edit(volume);
        const Written written = carry(volume);
        for (const std::string &part : each.parts) {
            if (part[0] == '!')
                EXPECT_EQ(written.xml.find(part.substr(1)), written.xml.npos) << part;
            else
                EXPECT_NE(written.xml.find(part), written.xml.npos) << part << written.xml;
        }
        EXPECT_EQ(written.names, each.names) << written.said;
    }
}

std::int64_t count(std::string_view text, std::string_view part)
{
    std::int64_t found = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; at += part.size())
        ++found;
    return found;
}

TEST(StationXml, VolumesAreOneDocument)
{
    const Folder folder;
    SoundVolume first;
    first.response.insert(first.response.begin(), {59, b059("2020,001", "", 1, 0)});
    SoundVolume same;
    same.dictionaries.push_back({31, b031(2, 'C', "Another", 0)});
    same.response.insert(same.response.begin(), {59, b059("2021,001", "", 2, 0)});
    same.channels.push_back(same.channels[0]);
    same.channels[1].location = "10";
    SoundVolume other;
    other.response[1].second = b058(1, 1001, 1);
    other.stations.insert(other.stations.begin(), {.station = "ZZZ", .network = "YY"});
    const std::vector<std::string> paths = {folder.add("first", first.bytes()),
                                            folder.add("same", same.bytes()),
                                            folder.add("other", other.bytes())};
    const Written two = carry({.volumes = {paths[0], paths[1]}});
    EXPECT_EQ(two.status, 0) << two.said;
    EXPECT_EQ(count(two.xml, "<Station "), 1);
    EXPECT_EQ(count(two.xml, "<Channel "), 2);
    EXPECT_EQ(count(two.xml, "<Comment "), 3); // both at the channel of both
    const Written three = carry({.volumes = {paths[0], paths[2]}});
    EXPECT_EQ(three.status, 1);
    EXPECT_EQ(three.names, "contradiction");
    EXPECT_NE(three.said.find(paths[2] + ":3: warning: XX_QRL__BHZ 2020,001: the epoch of "),
              three.said.npos)
        << three.said;
    EXPECT_NE(three.said.find(paths[0] + ", record 3"), three.said.npos) << three.said;
    EXPECT_EQ(count(three.xml, "<Network "), 2);
    EXPECT_EQ(count(three.xml, "<Station code=\"QRL\""), 1);
}

TEST(StationXml, LevelsSelectionsAndWhatIsKept)
{
    SoundVolume volume;
    volume.channels[0].subchannel = 2;
    volume.response.push_back({56, "01001002000100000E+00-6.0000E+00"});
    const auto at = [&](StationXmlLevel level) { return carry(volume, {.level = level}).xml; };
    EXPECT_EQ(count(at(StationXmlLevel::network), "<Station "), 0);
    EXPECT_EQ(count(at(StationXmlLevel::station), "<Channel "), 0);
    EXPECT_EQ(count(at(StationXmlLevel::channel), "<InstrumentSensitivity>"), 1);
    EXPECT_EQ(count(at(StationXmlLevel::channel), "<Stage "), 0);
    const Written kept = carry(volume, {.source = "S--", .keep_all = true});
    EXPECT_EQ(count(kept.xml, "<!-- subchannel 2 -->"), 1) << kept.xml;
    EXPECT_EQ(count(kept.xml, "<!-- data format: Steim2 "), 1);
    const Written none =
        carry(volume, {.select = [](const ChannelCode &, double, double) { return false; }});
    EXPECT_EQ(none.xml, "");
    EXPECT_EQ(none.status, 1);
}

TEST(StationXml, WritesFilesWholeOrNotAtAll)
{
    const Folder folder;
    SoundVolume volume;
    volume.channels[0].location = "/.";
    const std::string path = folder.add("V", volume.bytes());
    const std::string xml = folder.at("V.xml");
    EXPECT_EQ(carry({.volumes = {path}, .output = xml, .resp_folder = folder.at("resp")}).status,
              0);
    EXPECT_TRUE(fs::exists(folder.at("resp/RESP.XX.QRL.__.BHZ")));
    const std::string before = ::read_file(xml);
    const std::string empty = folder.add("data", std::string());
    EXPECT_EQ(carry({.volumes = {empty}, .output = xml}).status, 1);
    EXPECT_EQ(carry({.volumes = {folder.at("none")}, .output = xml}).status, Volume_Unread);
    EXPECT_EQ(carry({.volumes = {path}, .output = path}).status, Volume_Unread);
    EXPECT_EQ(::read_file(xml), before);
    const Written checked = carry({.volumes = {path}, .validate = true});
    EXPECT_EQ(checked.status, 0);
    EXPECT_NE(checked.said.find("[location-code]"), checked.said.npos) << checked.said;
    EXPECT_NE(checked.said.find(" in 1 volume\n"), checked.said.npos) << checked.said;
}

TEST(StationXml, EveryTextCanBeWritten)
{
    const auto escaped = [](std::string_view text) {
        std::string to;
        const std::size_t replaced = xml::append_escaped(&to, text);
        return to + '|' + std::to_string(replaced);
    };
    EXPECT_EQ(escaped("a\tb\r\n]]>'"), "a&#9;b&#13;&#10;]]&gt;'|0");
    EXPECT_EQ(escaped(std::string("\0\x0b\x1f\x7f", 4)),
              "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\x7f|3");
    EXPECT_EQ(escaped("\xe9<\xc3"), "\xc3\xa9&lt;\xc3\x83|0");                         // Latin-1
    EXPECT_EQ(escaped("\xc3\xa9<\xf0\x9f\x98\x80"), "\xc3\xa9&lt;\xf0\x9f\x98\x80|0"); // UTF-8
    EXPECT_EQ(escaped("\xef\xbf\xbf"), "\xEF\xBF\xBD|1");             // no character
    EXPECT_EQ(escaped("\xed\xa0\x80"), "\xc3\xad\xc2\xa0\xc2\x80|0"); // a surrogate is none
    EXPECT_EQ(escaped("\xc0\xbc"), "\xc3\x80\xc2\xbc|0");             // an overlong "<"
}

} // namespace
