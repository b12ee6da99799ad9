// Prints what the library makes of the responses of the volumes named as arguments, one line per
// value, for a comparison with another evaluation:
//
//   epoch station.location.channel,start    then one of, or nothing for responses by reference:
//   refused reason
//   warnings count, then: frequency amplitude phase
#include "inventory/parts.h"

#include <cstdio>
#include <quarl/response.h>
#include <quarl/volume.h>
#include <utility>

namespace
{

using namespace quarl;

/// One channel epoch at a time, from its identifier to the next.
class Printer
{
public:
    void take(const record_t *record, int type);
    void finish();

private:
    template <class Blk> void add(const Blk &blk)
    {
        builder_.add(blk.stage_num, Filter(shape_of(blk)));
    }

    ResponsePool pool_;
    ResponseBuilder builder_{pool_};
    Evaluator evaluator_{frequency_grid(1e9)};
    double rate_ = 0.0;
    bool open_ = false;
    bool by_reference_ = false;
};

void Printer::take(const record_t *record, int type)
{
    switch (type) {
    case 50:
        finish();
        break;
    case 52: {
        finish();
        const auto &channel = static_cast<const blk_052_t &>(*record);
        open_ = true;
        rate_ = channel.sample_rate;
        std::printf("epoch %s.%s.%s,%s\n", channel.station, channel.loc_id, channel.chan_id,
                    channel.start_date);
        break;
    }
    case 53:
        return add(static_cast<const blk_053_t &>(*record));
    case 54:
        return add(static_cast<const blk_054_t &>(*record));
    case 55:
        return add(static_cast<const blk_055_t &>(*record));
    case 57: {
        const auto &blk = static_cast<const blk_057_t &>(*record);
        return builder_.add(blk.stage_num, decimation_of(blk));
    }
    case 58: {
        const auto &blk = static_cast<const blk_058_t &>(*record);
        return builder_.add(blk.stage_num, gain_of(blk));
    }
    case 60:
        by_reference_ = true;
        break;
    case 61:
        return add(static_cast<const blk_061_t &>(*record));
    case 62:
        return add(static_cast<const blk_062_t &>(*record));
    default:
        break;
    }
}

void Printer::finish()
{
    const Response response = builder_.take(rate_);
    if (std::exchange(open_, false) && !std::exchange(by_reference_, false)) {
        const std::size_t count = frequency_grid_size(rate_);
        const Evaluation result = evaluator_.evaluate(response, count);
        if (result.refused())
            std::printf("refused %s\n", result.error.c_str());
        else
            std::printf("warnings %zu\n", result.warnings.size());
        for (std::size_t i = 0; i < result.values.size(); ++i)
            std::printf("%.17g %.17g %.17g\n", evaluator_.frequencies()[i],
                        std::abs(result.values[i]), phase_degrees(result.values[i]));
    }
}

} // namespace

int main(int argc, char *argv[])
{
    for (int i = 1; i < argc; ++i) {
        Volume volume(argv[i], {.message = [](const Message &) {}});
        Printer printer;
        for (const Item &item : volume)
            if (item.record())
                printer.take(item.record(), item.type());
        printer.finish();
    }
}
