// Prints the response of each channel epoch of a SEED volume at one frequency, 1 Hz or the second
// argument, as tab-separated values: channel, start of the epoch, stages, units, amplitude in
// counts per unit, phase in degrees; or why there is none.
#include <quarl/inventory.h>
#include <quarl/response.h>
#include <quarl/volume.h>

#include <complex>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace
{

void print(const quarl::Inventory &inventory, const quarl::ChannelEpoch &epoch,
           const quarl::Evaluation &evaluation)
{
    const std::string channel = inventory.channel_of(epoch).code.text();
    const std::string start = quarl::time_text(epoch.start);
    const std::string unit(inventory.unit(epoch.signal_units));
    std::printf("%s\t%s\t%zu stages\t%s\t", channel.c_str(), start.c_str(),
                epoch.response.stages.size(), unit.c_str());
    if (evaluation.refused()) {
        std::printf("none: %s\n", evaluation.error.c_str());
        return;
    }
    const std::complex<double> value = evaluation.values.front();
    std::printf("%.4g\t%.1f\n", std::abs(value), quarl::phase_degrees(value));
}

} // namespace

int main(int argc, char *argv[])
try {
    quarl::Inventory inventory;
    quarl::Volume volume(argc > 1 ? argv[1] : "-");
    for (const quarl::Item &item : volume)
        inventory.add(item);
    inventory.finish();
    quarl::Evaluator evaluator({argc > 2 ? std::atof(argv[2]) : 1.0});
    for (const quarl::ChannelEpoch &epoch : inventory.channel_epochs())
        print(inventory, epoch, evaluator.evaluate(epoch.response));
} catch (const quarl::Error &error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
