// A volume from the first byte to the end of its document and RESP texts; the first byte of the
// input is the target whole_run's. Documents hold characters that XML can hold, whatever the
// volume.
#include "fuzz/harness.h"
#include "platform/inflate.h"
#include "platform/utf8.h"

#include <quarl/inventory.h>
#include <quarl/records.h>
#include <quarl/stationxml.h>
#include <quarl/volume.h>
#include <sstream>

namespace
{

void expect_characters(std::string_view text)
{
    while (!text.empty()) {
        const Utf8Character character = utf8_character(text);
        if (character.size == 0 || (character.code < ' ' && character.code != '\n'))
            __builtin_trap();
        text.remove_prefix(character.size);
    }
}

void carry(const std::string &path)
{
    Inventory inventory;
    VolumeOptions options;
    options.one_file = true;
    options.message = [](const Message &) {};
    Volume volume(path, std::move(options));
    for (const Item &item : volume)
        if (item.type() != Data_Record)
            inventory.add(item);
    inventory.finish();
    // Beside itself: each epoch is compared with another volume's.
    const std::array<NamedInventory, 2> volumes = {{{"one", &inventory}, {"two", &inventory}}};
    const StationXml document(volumes, {.keep_all = true});
    std::ostringstream text;
    if (!document.is_empty())
        document.write(text);
    expect_characters(text.view());
    document.for_each_channel([&](std::size_t, const ChannelEpoch &epoch) {
        write_resp(text, inventory, epoch);
        (void)resp_name(inventory.channel_of(epoch).code);
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view bytes = as_text(data + 1, size - 1);
    if (new_inflater(-1, bytes))
        return 0; // the target "compressed" reads these
    const MemoryFile volume(bytes);
    run_one([&](Console *) { carry(volume.path()); });
    return 0;
}
