// Prints what is reported of SEED volumes as tab-separated values: volume, byte, severity, kind,
// text. A volume whose reading cannot go on does not end the program.
#include <quarl/volume.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace
{

void print(const char *path, const std::string &byte, quarl::MessageKind kind, std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');
    const std::string name(quarl::name_of(kind));
    const std::string severity(quarl::name_of(quarl::severity_of(kind)));
    std::printf("%s\t%s\t%s\t%s\t%s\n", path, byte.c_str(), severity.c_str(), name.c_str(),
                text.c_str());
}

/// False when the volume could not be read to its end.
bool read_volume(const char *path)
try {
    quarl::VolumeOptions options;
    options.message = [path](const quarl::Message &message) {
        const quarl::Place &place = message.item ? message.item->place() : message.place;
        print(path, std::to_string(place.offset), message.kind, quarl::full_text(message));
    };
    quarl::Volume volume(path, options);
    while (volume.next() != nullptr) {
    }
    return true;
} catch (const quarl::Error &error) {
    print(path, "-", error.kind(), error.what());
    return false;
}

} // namespace

int main(int argc, char *argv[])
{
    int failures = 0;
    for (int i = 1; i < argc; ++i)
        failures += read_volume(argv[i]) ? 0 : 1;
    return failures == 0 ? 0 : 1;
}
