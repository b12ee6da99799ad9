// All state of the reading of one volume.
#pragma once

#include "blockette/parsing.h"
#include "blockette/pfree.h"
#include "platform/elog.h"
#include "volume/count.h"
#include "volume/format_lookup.h"
#include "volume/format_sources.h"
#include "volume/handle.h"
#include "volume/run.h"
#include "volume/seedformat.h"

#include <memory>
#include <optional>
#include <quarl/item.h>
#include <quarl/options.h>

namespace quarl
{

/// What a volume owns. Each module finds its part while a Reading of it lives.
struct State : Host {
    explicit State(VolumeOptions chosen);

    void hear(Message &message) override;
    void before_wait() override;
    bool gives_up() override;

    VolumeOptions options;
    std::shared_ptr<FormatSources> formats; ///< the options' or one of its own
    Run run;
    Parsing parsing;
    FormatsMet formats_met;
    FormatTable format_table;
    Count count;
    std::unique_ptr<read_handle_t> handle;

    Record record;                ///< of the item that is out
    int type = 0;                 ///< its type
    FileEnd file_end;             ///< or this
    bool counts = false;          ///< it is to be counted when its turn is over
    bool in_file = false;         ///< an input file was begun
    bool ended = false;           ///< there are no more items
    std::optional<Error> failure; ///< nothing goes on
};

/// Makes a volume's state current as long as this lives.
class Reading
{
public:
    explicit Reading(State &state) : host_(state), run_(state.run), parsing_(state.parsing) {}

private:
    Current<Host> host_;
    Current<Run> run_;
    Current<Parsing> parsing_;
};

} // namespace quarl
