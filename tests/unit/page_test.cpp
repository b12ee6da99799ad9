// Pages: texts of volumes in markup and JSON, responses told once, files that are there whole or
// not at all, and how runs of quarl-html end.
#include "bench/worst_responses.h"
#include "compose/blockette_text.h"
#include "compose/files.h"
#include "compose/sample.h"
#include "compose/volume.h"
#include "html/curves.h"
#include "html/data.h"
#include "html/drawn.h"
#include "html/markup.h"
#include "html/notation.h"
#include "html/sampling.h"
#include "platform/utf8.h"
#include "programs/output_file.h"
#include "support/capture.h"
#include "support/process.h"
#include "support/sanitized.h"

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace
{

namespace fs = std::filesystem;

constexpr double No_Number = std::numeric_limits<double>::quiet_NaN();
constexpr double Infinity = std::numeric_limits<double>::infinity();

template <class F> std::string written(F &&write)
{
    return capture([&] {
               Out to(STDOUT_FILENO);
               std::forward<F>(write)(to);
               to.flush();
           })
        .out;
}

std::int64_t count(std::string_view text, std::string_view part)
{
    std::int64_t found = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; at += part.size())
        ++found;
    return found;
}

TEST(Page, TextsAreNoMarkup)
{
    const auto text = [](std::string_view latin) {
        return written([&](Out &to) { html::Markup(to).text(latin); });
    };
    EXPECT_EQ(text("<b a=\"1\" c='2'>&amp;"), "&lt;b a=&quot;1&quot; c=&#39;2&#39;&gt;&amp;amp;");
    EXPECT_EQ(text({"\0\x1b\n\x7f\x85\xa0\xad", 7}), "\\x00\\x1b\\x0a\\x7f\\x85\\xa0\\xad");
    EXPECT_EQ(text("\xa1\xff"), "\u00a1\u00ff");

    const auto path = [](std::string_view name) {
        return written([&](Out &to) { html::Markup(to).path(name); });
    };
    EXPECT_EQ(path("f\u00fcr/\u65e5\u672c<\U0001f30b>"), "f\u00fcr/\u65e5\u672c&lt;\U0001f30b&gt;");
    for (const char *odd : {"\xc3", "\xc0\xbc", "\xed\xa0\x80", "\xe2\x80\xae", "\xf4\x90\x80\x80"})
        EXPECT_FALSE(is_plain_utf8(odd)) << odd;
}

TEST(Page, JsonNumbersAndTexts)
{
    const std::string text = written([](Out &to) {
        Json json(to);
        json.open('[');
        for (const double value :
             {0.0, -0.04, 179.96, -180.0, 0.125, 12.5, No_Number, Infinity, 1e300})
            json.fixed(value, 1);
        for (const double value : {1.0 / 3, 1e-7, 123456789.0, 2e15, 3e-200, -Infinity})
            json.real(value, 4);
        for (const double value : {1.00004, 1709251200.00833, Forever, Always})
            html::write_time(&json, value);
        json.text(" </script>\"\\\x1b\xe9\x85 ");
        json.close(']');
    });
    EXPECT_EQ(text, "[0,0,180,-180,0.1,12.5,null,null,1e+300,"
                    "0.3333,1e-7,1.235e8,2e15,3e-200,null,1,1709251200.0083,null,null,"
                    "\"\\u003c/script>\\\"\\\\\\u001b\u00e9\\u0085\"]");
}

/// Amplitude and phase of a drawn curve at a place.
std::pair<double, double> on_line(const std::vector<html::DrawnPoint> &points, double at)
{
    auto above = points.begin() + 1;
    while (above->at < at)
        ++above;
    const html::DrawnPoint &a = above[-1];
    const double share = (at - a.at) / (above->at - a.at);
    return {std::exp(std::lerp(std::log(a.amplitude), std::log(above->amplitude), share)),
            std::lerp(double{a.phase}, double{above->phase}, share)};
}

TEST(Page, LinesFollowCurves)
{
    std::vector<std::complex<double>> curve; // a resonance, and a phase that winds
    std::vector<double> places;
    std::vector<double> phases;
    for (int i = 0; i < 400; ++i) {
        const double f = std::pow(10, (i - 240) / 80.0);
        const auto value = 3.0 / std::complex<double>(1 - f * f, 0.1 * f) * std::polar(1.0, -f);
        curve.push_back(-value);
        places.push_back(i / 4.0);
        phases.push_back((std::arg(1.0 / std::complex<double>(1 - f * f, 0.1 * f)) - f) * 180 /
                         std::numbers::pi);
    }
    std::vector<html::DrawnPoint> points;
    html::add_drawn(places, curve, -3.0, &points);
    EXPECT_LT(points.size(), 150);
    for (std::size_t i = 0; i < curve.size(); ++i) {
        const auto [amplitude, phase] = on_line(points, places[i]);
        EXPECT_NEAR(amplitude * 3 / std::abs(curve[i]), 1.0, 0.0032) << i;
        EXPECT_NEAR(phase, phases[i], 0.26) << i; // over all its turns
    }
    EXPECT_LT(points.back().phase, -3600);

    const std::vector<std::complex<double>> broken = {1, 1, 1, 1, No_Number, 1, 0, 1, 1, 1, 1, 1};
    points.clear();
    html::add_drawn({}, {}, 1, &points);
    html::add_drawn(std::span(places).first(broken.size()), broken, 1, &points);
    std::vector<double> at;
    at.reserve(points.size());
    for (const html::DrawnPoint &point : points)
        at.push_back(4 * point.at);
    EXPECT_EQ(at, std::vector<double>({0, 3, 4, 5, 6, 7, 11}));
}

TEST(Page, NamesAndTimes)
{
    EXPECT_EQ(html::page_name({"XX", "ABC", "", "BHZ"}), "XX.ABC..BHZ");
    EXPECT_EQ(html::page_name({"", "ABC", "00", "BHZ", 2}), ".ABC.00.BHZ (2)");
    EXPECT_EQ(html::page_name({"XX", "ABC"}), "XX.ABC");
    EXPECT_EQ(html::page_time("2018,191,12:30:10.5"), "2018-07-10 12:30:10.5");
    EXPECT_EQ(html::page_time("2018,366"), "");

    html::Notation notation;
    notation.know({"XX", "ABC", "00", "BHZ"});
    notation.know({"XX", "ABC"});
    for (const auto &[text, put] : std::initializer_list<std::pair<const char *, const char *>>{
             {"XX_ABC_00_BHZ 2018,191", "XX.ABC.00.BHZ 2018-07-10"},
             {"XX_ABC: from 2018,191,12:30:00.0000 to 2019,001.",
              "XX.ABC: from 2018-07-10 12:30:00 to 2019-01-01."},
             {"XX_ABCD_ 4096,512 2018,1911 'a_b'", "XX_ABCD_ 4096,512 2018,1911 'a_b'"}})
        EXPECT_EQ(notation.put(text), put);
}

TEST(Page, FrequenciesSuitSensorAndRate)
{
    const auto range = [](double pole, double rate) {
        Response response;
        auto stage = std::make_shared<Stage>();
        PolesZeros roots;
        roots.type = 'A';
        roots.poles = {{-pole * 2 * std::numbers::pi, 0}, {0, 0}};
        stage->number = 1;
        stage->parts.emplace_back(std::make_shared<const Filter>(roots));
        response.stages.push_back(stage);
        const std::vector<double> all = html::base_frequencies(response, rate);
        EXPECT_TRUE(std::ranges::is_sorted(all));
        return all.empty() ? std::pair(0.0, 0.0) : std::pair(all.front(), all.back());
    };
    EXPECT_EQ(range(1 / 360.0, 100), std::pair(0.0001, 50.0));
    EXPECT_EQ(range(1 / 30.0, 20.1), std::pair(0.001, 10.05));
    EXPECT_EQ(range(10, 0.001), std::pair(1e-5, 0.0005));
    EXPECT_EQ(range(1e-300, 1e300), std::pair(1e-6, 1e7));
    for (const double none : {0.0, -1.0, No_Number})
        EXPECT_EQ(range(1, none), std::pair(0.0, 0.0));
}

class PageRun : public testing::Test
{
protected:
    PageRun() { fs::create_directory(folder_); }
    ~PageRun() override { fs::remove_all(folder_); }

    [[nodiscard]] std::string path(const std::string &name) const { return folder_ / name; }
    std::string file(const std::string &name, const std::string &bytes) const
    {
        write_file(path(name), bytes);
        return path(name);
    }
    static Outcome page(const std::vector<std::string> &args, int in = STDIN_FILENO)
    {
        return run(std::string(QUARL_PROGRAM) + "-html", args, in);
    }

    const fs::path folder_ = fs::temp_directory_path() / ("page." + std::to_string(getpid()));
};

TEST_F(PageRun, CommandLine)
{
    for (const auto &[args, fault] :
         {std::pair<std::vector<std::string>, std::string>{{"-o"}, "-o needs a value"},
          {{"-o", "", "v"}, "-o needs the name of a file"},
          {{"a", "b"}, "more than one volume"}}) {
        const Outcome refused = page(args);
        EXPECT_EQ(refused.err, "quarl: " + fault + " (see quarl --help)\n");
        EXPECT_EQ(refused.out + refused.status, "2");
    }
}

TEST_F(PageRun, FileOrStream)
{
    const std::string volume = file("v.seed", sample_volume());
    const Outcome streamed = page({volume});
    EXPECT_EQ(streamed.status + streamed.err, "0");
    EXPECT_TRUE(streamed.out.ends_with("</html>\n"));

    // A file that is there keeps its rights, and a link to it stays one.
    const std::string target = file("old.html", "old");
    chmod(target.c_str(), 0640);
    fs::create_symlink(target, path("link.html"));
    EXPECT_EQ(page({"--output=" + path("link.html"), volume}).status, "0");
    EXPECT_TRUE(read_file(target) == streamed.out);
    EXPECT_TRUE(fs::is_symlink(path("link.html")));
    EXPECT_EQ(fs::status(target).permissions(), fs::perms(0640));

    // A link to nothing stays, too: its end is made.
    fs::create_symlink("new.html", path("second.html"));
    fs::create_symlink(path("second.html"), path("first.html"));
    EXPECT_EQ(page({"-o", path("first.html"), volume}).status, "0");
    EXPECT_TRUE(read_file(path("new.html")) == streamed.out);
    EXPECT_TRUE(fs::is_symlink(path("first.html")) && fs::is_symlink(path("second.html")));
    fs::create_symlink("loop.html", path("loop.html"));
    EXPECT_EQ(page({"-o", path("loop.html"), volume}).status, "2");

    for (const char *stream : {"/dev/stdout", "-"})
        EXPECT_TRUE(page({"-o", stream, volume}).out == streamed.out) << stream;
    EXPECT_EQ(page({"-o", "/dev/full", volume}).status, "2");
}

TEST_F(PageRun, FailuresLeaveWhatWasThere)
{
    const std::string volume = file("v.seed", sample_volume());
    const std::string old = file("old.html", "old");
    for (const std::string &input : {path("missing"), path("")}) {
        const Outcome failed = page({"-o", old, input});
        EXPECT_EQ(failed.status, "2") << input;
        EXPECT_NE(failed.err, "") << input;
    }
    // A file that may not grow ends the writing in the middle.
    const Outcome full = run("/bin/sh",
                             {"-c", "trap '' XFSZ; ulimit -f 8; exec \"$0\" -o \"$1\" \"$2\"",
                              std::string(QUARL_PROGRAM) + "-html", old, volume},
                             STDIN_FILENO);
    EXPECT_EQ(full.err, "quarl-html: Can't write " + old + ": File too large\n");
    EXPECT_EQ(full.status, "2");
    EXPECT_EQ(page({"-o", path("none/page.html"), volume}).status, "2");
    EXPECT_EQ(page({"-o", volume, volume}).err,
              "quarl: " + volume + ": the page would replace the volume\n");
    EXPECT_TRUE(read_file(volume) == sample_volume());
    EXPECT_EQ(read_file(old), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 2) << "something was left";
}

TEST_F(PageRun, PartsOfVolumes)
{
    const std::string whole = sample_volume();
    const Outcome cut = page({file("cut.seed", whole.substr(0, 40000))});
    EXPECT_EQ(cut.status + cut.err, "0");
    EXPECT_NE(cut.out.find("data-rule=\"cut-volume\""), std::string::npos);
    EXPECT_NE(cut.out.find("\"complete\":false"), std::string::npos);
    EXPECT_EQ(page({file("empty.seed", "")}).status, "0");

    // What cannot go on is behind something that can be shown, or is the first thing.
    const std::string large = VolumeBuilder().data({.b1000 = DataOnly{.exponent = 21}}).volume();
    EXPECT_EQ(page({file("large.seed", large)}).status, "2");
    const Outcome part = page({file("part.seed", whole.substr(0, 24576) + large)});
    EXPECT_EQ(part.status, "1") << part.err;
    EXPECT_NE(part.err, "");
    EXPECT_TRUE(part.out.ends_with("</html>\n"));
}

/// Bytes of references make many times as many of filters, which a page must not keep.
TEST_F(PageRun, KeepsNoJoinedFilters)
{
    const std::int64_t size = sanitized() ? 64 << 10 : 256 << 10; // what is freed is kept there
    const Outcome joined = page({file("joined.seed", worst_responses("joined", size))});
    EXPECT_EQ(count(joined.out, R"("kind":"FIR","type":"A","coefficients":9800,"at":[)"),
              count(joined.out, "\"stage\":1,"));
    EXPECT_EQ(count(joined.out, "\"error\":"), 0);

    const Outcome refused = page({file("long.seed", worst_responses("references", size))});
    EXPECT_EQ(
        count(refused.out, "\"error\":\"stage 1: FIR filter of more than 9999 coefficients\""),
        count(refused.out, "\"same\":") + count(refused.out, "\"stage\":1,"));
    rusage usage = {};
    getrusage(RUSAGE_CHILDREN, &usage);
    EXPECT_LT(usage.ru_maxrss, sanitized() ? 400 << 10 : 24 << 10) << "KiB";
}

/// Joined filters that are equal are one, whatever blockettes of the stage stand around them.
TEST_F(PageRun, TellsOfJoinedFiltersOnce)
{
    const auto fir = [](double a, double b) { return b061({.coefficients = {a, b}}); };
    VolumeBuilder volume;
    volume.header('V').blockette(10, b010(2.4, 12, "2020,001", "", "", "", ""));
    volume.header('S').blockette(50, b050({}));
    const auto epoch = [&](const std::string &first, const std::string &second, double gain) {
        volume.blockette(52, b052({})).blockette(61, first).blockette(61, second);
        volume.blockette(57, b057(1, 20, 1, 0, 0, 0)).blockette(58, b058(1, gain, 0));
    };
    epoch(fir(1, 2), fir(3, 4), 1);
    epoch(fir(1, 2), fir(3, 4), 2);
    epoch(fir(3, 4), fir(1, 2), 1);
    const Outcome shown = page({file("joined.seed", volume.volume())});
    EXPECT_EQ(count(shown.out, R"("kind":"FIR","type":"A","coefficients":4)"), 2);
    EXPECT_EQ(count(shown.out, R"("stage":1,"filter":0)"), 2);
    EXPECT_EQ(count(shown.out, R"("stage":1,"filter":1)"), 1);
}

TEST_F(PageRun, SignalsGiveNoPage)
{
    const Pipe in;
    const Pipe err;
    const std::string target = path("page.html");
    const pid_t tool = start(std::string(QUARL_PROGRAM) + "-html", {"-o", target},
                             {in.read_end, err.write_end, err.write_end});
    ASSERT_TRUE(write_all(in.write_end, sample_volume()));
    for (int left = 1; left > 0; usleep(1000)) // until it reads, and so hears signals
        ASSERT_EQ(ioctl(in.read_end, FIONREAD, &left), 0);
    kill(tool, SIGTERM);
    EXPECT_EQ(wait_for(tool), "signal " + std::to_string(SIGTERM));
    EXPECT_FALSE(fs::exists(target));
}

TEST_F(PageRun, SignalsEndTheWriting)
{
    const std::string volume = file("v.seed", worst_responses("joined", 2 << 20));
    const std::string target = file("page.html", "old");
    for (const int signals : {1, 2}) {
        const pid_t tool = start(std::string(QUARL_PROGRAM) + "-html", {"-o", target, volume},
                                 {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO});
        const std::string draft = target + "." + std::to_string(tool) + ".tmp";
        for (int wait = 0; wait < 60'000 && !fs::exists(draft); ++wait)
            usleep(1000);
        for (int i = 0; i < signals; ++i, usleep(1000))
            kill(tool, SIGTERM);
        EXPECT_EQ(wait_for(tool), "signal " + std::to_string(SIGTERM));
        EXPECT_FALSE(fs::exists(draft));
        EXPECT_EQ(read_file(target), "old");
    }
}

} // namespace
