#include "listing/pbrief.h"

#include "blockette/blockette.h"
#include "blockette/sdblknam.h"
#include "platform/elog.h"
#include "platform/format.h"

namespace quarl
{

namespace
{

/// The text at `code`; empty when the volume did not define it.
std::string_view text_of(const Volume *volume, Dictionary dictionary, int code)
{
    const std::string *text = volume ? volume->text(dictionary, code) : nullptr;
    return text ? std::string_view(*text) : std::string_view();
}

bool is_zero(const Complex_t &c) { return c.real == 0.0 && c.imag == 0.0; }

std::string_view frequency_units(char code)
{
    switch (code) {
    case 'A':
        return "radians/s";
    case 'B':
        return "hz";
    default:
        return "*invalid_units*";
    }
}

/// The channel line of -S: texts instead of codes, no length, no catalogue name.
void pbrief_052_short(Out &stream, const blk_052_t &blk, const Volume *volume)
{
    print<"B%03d %3s %-2s %s %s %6.2fm  (%6.2f,%6.2f) %6.2fsps  %20s to %20s '%s'\n">(
        stream, blk.type, blk.chan_id, blk.loc_id,
        text_of(volume, Dictionary::abbreviations, blk.instr_id),
        text_of(volume, Dictionary::units, blk.units_signal), blk.depth, blk.azimuth, blk.dip,
        blk.sample_rate, blk.start_date, blk.end_date, blk.comment);
}

} // namespace

void pbrief_blk(Out &stream, const record_t *blk, int blk_type, const ListingStyle &style)
{
    if (blk_type == Data_Record)
        return pbrief_dh(stream, *static_cast<const blk_dh_t *>(blk));
    if (style.simplified && blk_type == blk_052_t::Number)
        return pbrief_052_short(stream, *static_cast<const blk_052_t *>(blk), style.volume);
    if (!visit(blk, blk_type, [&](const auto &known) { pbrief(stream, known); }))
        print<"Unknown blockette: %5i\n">(stream, blk_type);
}

void complain_of_type(int type)
{
    elog_complain<MessageKind::blockette_unknown, "failed to parse blockette #%d">(0, type);
}

void complain_of_types(const Item &item)
{
    if (const auto *end = item.get<FileEnd>()) {
        for (const Statistics::Type &type : end->statistics.types)
            (void)sdblknam(type.type);
    } else if (item.type() != Data_Record && !with_family(item.type(), [](auto /*family*/) {})) {
        complain_of_type(item.type());
    }
}

void pbrief_010(Out &stream, const blk_010_t &blk)
{
    print<"B%03i %3i Version %.1f  LogRecLen %2i  Start:%20s End:%20s <%s>\n">(
        stream, blk.type, blk.length, blk.version, blk.rec_len, blk.beg_time, blk.end_time,
        sdblknam(blk.type));
}

void pbrief_011(Out &stream, const blk_011_t &blk)
{
    print<"B%03i %3i %i Stations  <%s>\n">(stream, blk.type, blk.length, blk.num_stn,
                                           sdblknam(blk.type));
    for (int i = 0; i < blk.num_stn; ++i)
        print<"\t%3i %5s %6d\n">(stream, i, blk.station(i), blk.seq_num[i]);
}

void pbrief_012(Out &stream, const blk_012_t &blk)
{
    print<"B%03i %3i #spans %4i <%s>\n">(stream, blk.type, blk.length, blk.num_span,
                                         sdblknam(blk.type));
    for (int i = 0; i < blk.num_span; ++i)
        print<"\t%5i Start:%20s End:%20s seq#%6i\n">(stream, i, blk.beg_span[i], blk.end_span[i],
                                                     blk.seq_num[i]);
}

void pbrief_030(Out &stream, const blk_030_t &blk)
{
    print<"B%03i %3i %-50s id#%4i type#%3i %5i keys <%s>\n">(stream, blk.type, blk.length, blk.name,
                                                             blk.format_id, blk.data_type,
                                                             blk.num_keys, sdblknam(blk.type));
    for (int i = 0; i < blk.num_keys; ++i)
        print<"\t%2i %20s \n">(stream, i, blk.decode_key[i].text);
}

void pbrief_031(Out &stream, const blk_031_t &blk)
{
    print<"B%03i %3i Id#%4i Class:%c units:%3i '%s' <%s>\n">(
        stream, blk.type, blk.length, blk.comment_id, blk.class_code, blk.units, blk.comment,
        sdblknam(blk.type));
}

void pbrief_032(Out &stream, const blk_032_t &blk)
{
    print<"B%03i %3i Id#%2i Author:%s Catalog/Date:%s Publisher:%s <%s>\n">(
        stream, blk.type, blk.length, blk.source_id, blk.author, blk.catalog, blk.publisher,
        sdblknam(blk.type));
}

void pbrief_033(Out &stream, const blk_033_t &blk)
{
    print<"B%03i %3i Id#%3i '%s' <%s>\n">(stream, blk.type, blk.length, blk.abbrev_id, blk.abbrev,
                                          sdblknam(blk.type));
}

void pbrief_034(Out &stream, const blk_034_t &blk)
{
    print<"B%03i %3i Id#%3i Unit:'%s' Desc:'%s' <%s>\n">(stream, blk.type, blk.length, blk.unit_id,
                                                         blk.unit_name, blk.unit_desc,
                                                         sdblknam(blk.type));
}

void pbrief_050(Out &stream, const blk_050_t &blk)
{
    print<"B%03i %3i %4s %2s (%10.6f,%10.6f) %6.1fm @ '%s' NetId#%5i Long:%04i Word:%02i Order  "
          "Start:%20s End:%20s Update:%c <%s>\n">(
        stream, blk.type, blk.length, blk.station, blk.network_code, blk.lat, blk.lon, blk.elev,
        blk.name, blk.net_id, blk.long_order, blk.word_order, blk.start_date, blk.end_date,
        blk.update, sdblknam(blk.type));
}

void pbrief_051(Out &stream, const blk_051_t &blk)
{
    print<"B%03i %3i Start:%20s End:%20s Id#%4i Level#%6i <%s>\n">(
        stream, blk.type, blk.length, blk.beg_time, blk.end_time, blk.comment_key,
        blk.comment_level, sdblknam(blk.type));
}

void pbrief_052(Out &stream, const blk_052_t &blk)
{
    print<"B%03i %3i Loc:%2s Chan:%3s Sub#%4i Instr#%3i SigUnits#%3i CalUnits#%3i "
          "(%6.2f,%6.2f) %6.2fm  Depth:%6.2fm  Az:%6.2f Dip:%6.2f DataFmt#%4i RecLen:%2i "
          "Samprate:%6.2fhz  ClkDrift:%6.2fs Flags:'%s' Start:%20s End:%20s Update:%c '%s' "
          "<%s>\n">(stream, blk.type, blk.length, blk.loc_id, blk.chan_id, blk.subchan_id,
                    blk.instr_id, blk.units_signal, blk.units_cal, blk.lat, blk.lon, blk.elev,
                    blk.depth, blk.azimuth, blk.dip, blk.format_id, blk.record_length,
                    blk.sample_rate, blk.max_drift, blk.chan_flags, blk.start_date, blk.end_date,
                    blk.update, blk.comment, sdblknam(blk.type));
}

void pbrief_053(Out &stream, const blk_053_t &blk)
{
    print<"B%03i %d Type:%c Stage#%2i Input Units:%3i Output Units:%3i Norm:%6.4e @%6.2fHz  "
          "%3i Poles %3i Zeros  <%s>\n">(stream, blk.type, blk.length, blk.func_type, blk.stage_num,
                                         blk.input_units, blk.output_units, blk.normal_factor,
                                         blk.normal_freq, blk.num_poles, blk.num_zeros,
                                         sdblknam(blk.type));
    print<"\t  n     Poles (r, i)                   Errors(r, i) \n">(stream);
    for (int i = 0; i < blk.num_poles; ++i) {
        const auto &[root, error] = std::tie(blk.pole[i], blk.pole_error[i]);
        if (is_zero(error))
            print<"\t%3d (%+12.5E %+12.5e)\n">(stream, i, root.real, root.imag);
        else
            print<"\t%3d (%+12.5E %+12.5e)   (%12.5e %12.5e) \n">(stream, i, root.real, root.imag,
                                                                  error.real, error.imag);
    }
    print<"\t  n     Zeros (r, i)                   Errors(r, i) \n">(stream);
    for (int i = 0; i < blk.num_zeros; ++i) {
        const auto &[root, error] = std::tie(blk.zero[i], blk.zero_error[i]);
        if (is_zero(error))
            print<"\t%3d (%+12.5E %+12.5e)\n">(stream, i, root.real, root.imag);
        else
            print<"\t%3d (%+12.5E %+12.5e)   (%12.5e %12.5e)\n">(stream, i, root.real, root.imag,
                                                                 error.real, error.imag);
    }
}

void pbrief_054(Out &stream, const blk_054_t &blk)
{
    print<"B%03i %d Type:%c stage#%2i Input:%3i Output:%3i  %4i Numerators, %4i Denominators  "
          "<%s>\n">(stream, blk.type, blk.length, blk.func_type, blk.stage_num, blk.input_units,
                    blk.output_units, blk.num_numer, blk.num_denom, sdblknam(blk.type));
    for (int i = 0; i < blk.num_numer; ++i) {
        if (blk.numer_error[i] == 0.0)
            print<"\t%5i %+12.5E\n">(stream, i, blk.numer_coef[i]);
        else
            print<"\t%5i %+12.5E  %+12.5e\n">(stream, i, blk.numer_coef[i], blk.numer_error[i]);
    }
    for (int i = 0; i < blk.num_denom; ++i) {
        if (blk.denom_error[i] == 0.0)
            print<"\t%5i %+12.5E\n">(stream, i, blk.denom_coef[i]);
        else
            print<"\t%5i %+12.5E %+12.5e\n">(stream, i, blk.denom_coef[i], blk.denom_error[i]);
    }
}

void pbrief_055(Out &stream, const blk_055_t &blk)
{
    print<"B%03i %d stage#%2i Input:%3i Output:%3i  %4i frequencies <%s>\n">(
        stream, blk.type, blk.length, blk.stage_num, blk.input_units, blk.output_units,
        blk.num_resp, sdblknam(blk.type));
    for (int i = 0; i < blk.num_resp; ++i)
        print<"\t%5i %+12.5e  %12.5e %12.5e   %12.5e %12.5e\n">(
            stream, i, blk.frequency[i], blk.amplitude[i], blk.amplitude_error[i], blk.phase[i],
            blk.phase_error[i]);
}

void pbrief_057(Out &stream, const blk_057_t &blk)
{
    print<"B%03i %d Stage#%2i SampRateIn:%6.2fHz Decimation:%5i Offset:%5i Delay:%6.3fs "
          "Correction:%6.3fs <%s>\n">(stream, blk.type, blk.length, blk.stage_num, blk.samprate,
                                      blk.dec_factor, blk.dec_offset, blk.delay, blk.correction,
                                      sdblknam(blk.type));
}

void pbrief_058(Out &stream, const blk_058_t &blk)
{
    const std::string_view label = blk.stage_num == 0 ? "Sensitivity:" : "Gain";
    print<"B%03i %3i Stage#%5i %s:%10.6e Freq:%8.4fHz <%s>\n">(
        stream, blk.type, blk.length, blk.stage_num, label, blk.gain, blk.freq, sdblknam(blk.type));
}

void pbrief_059(Out &stream, const blk_059_t &blk)
{
    print<"B%03i %d Start:%20s End:%20s Comment#%4i Level#%6i <%s>\n">(
        stream, blk.type, blk.length, blk.beg_time, blk.end_time, blk.comment_key,
        blk.comment_level, sdblknam(blk.type));
}

void pbrief_061(Out &stream, const blk_061_t &blk)
{
    print<"B%03i %d stage#%2i '%s' Symmetry: %c Input:%3i Output:%3i  %4d Coefficients: <%s>\n">(
        stream, blk.type, blk.length, blk.stage_num, blk.response_name, blk.symmetry,
        blk.input_units, blk.output_units, blk.num_coef, sdblknam(blk.type));
    for (int i = 0; i < blk.num_coef; ++i)
        print<"\t%5i %+12.5E\n">(stream, i, blk.coef[i]);
}

void pbrief_062(Out &stream, const blk_062_t &blk)
{
    print<"B%03i %d stage#%d Input:%d Output:%d  (%.4f-%.4f %s) approx-range=(%.1f-%.1f) "
          "max_err=%.1f order=%d  <%s>\n">(
        stream, blk.type, blk.length, blk.stage_num, blk.input_units, blk.output_units,
        blk.lower_valid_frequency_bound, blk.upper_valid_frequency_bound,
        frequency_units(blk.valid_frequency_units), blk.lower_bound_of_approximation,
        blk.upper_bound_of_approximation, blk.maximum_absolute_error, blk.num_coef_listed,
        sdblknam(blk.type));
    for (int i = 0; i < blk.num_coef_listed; ++i)
        print<"\t%5i %+12.5e  %12.5e\n">(stream, i, blk.coef_listed[i], blk.coef_error_listed[i]);
}

void pbrief_070(Out &stream, const blk_070_t &blk)
{
    print<"B%03i %3i Type:%c Start:%20s End:%20s <%s>\n">(stream, blk.type, blk.length,
                                                          blk.span_flag, blk.beg_time, blk.end_time,
                                                          sdblknam(blk.type));
}

void pbrief_071(Out &stream, const blk_071_t &blk)
{
    print<"B%03i %d Time:%20s Id#%5i (%6.2f,%6.2f) Depth:%6.2fkm #:%i grn=%d srn=%d gregion='%s' "
          "<%s>\n">(stream, blk.type, blk.length, blk.origin_time, blk.source_id, blk.lat, blk.lon,
                    blk.depth, blk.num_mags, blk.grn, blk.srn, blk.gregion, sdblknam(blk.type));
    for (int i = 0; i < blk.num_mags; ++i)
        print<"\t%2d Magnitude:%6.2f Source:%2i '%s'\n">(stream, i, blk.mag[i], blk.mag_source[i],
                                                         blk.mag_type[i]);
}

void pbrief_072(Out &stream, const blk_072_t &blk)
{
    print<"B%03i %3i %5s Loc:%2s Chan:%3s Time:%20s Amp:%6.2f Period:%6.2f S/N:%6.2f Phase:'%s' "
          "source=%d net=%s <%s>\n">(stream, blk.type, blk.length, blk.stn_id, blk.loc_id,
                                     blk.chan_id, blk.arr_time, blk.amp, blk.period, blk.snr,
                                     blk.phase, blk.source, blk.network_code, sdblknam(blk.type));
}

void pbrief_073(Out &stream, const blk_073_t &blk)
{
    for (int i = 0; i < blk.num_segs; ++i)
        print<"B%03i %3i Segment #%5i of %5i Sta: %5s Loc: %2s Chan: %3s Start:%20s seq# %5i "
              "subseq# %5i <%s>\n">(stream, blk.type, blk.length, i, blk.num_segs, blk.stn_id[i],
                                    blk.loc_id[i], blk.chan_id[i], blk.series_start_time[i],
                                    blk.seq_num[i], blk.sub_seq_num[i], sdblknam(blk.type));
}

void pbrief_074(Out &stream, const blk_074_t &blk)
{
    print<"B%03i %3i Net: %2s Sta: %5s Loc: %2s Chan: %3s Start:%20s seq# %5i subseq# %5i "
          "End:%20s seq# %5i subseq# %5i #repeats %5i <%s>\n">(
        stream, blk.type, blk.length, blk.network_code, blk.stn_id, blk.loc_id, blk.chan_id,
        blk.series_start_time, blk.first_seq_num, blk.first_sub_seq_num, blk.series_end_time,
        blk.last_seq_num, blk.last_sub_seq_num, blk.num_repeats, sdblknam(blk.type));
    for (int i = 0; i < blk.num_repeats; ++i)
        print<"\t%3i Start:%20s seq# %5i subseq# %5i\n">(
            stream, i, blk.rec_start_time[i], blk.req_seq_num[i], blk.req_sub_seq_num[i]);
}

void pbrief_dh(Out &stream, const blk_dh_t &blk)
{
    print<"DATA Net: %2s Sta: %5s Loc: %2s Chan: %4s Start:%20s #samples: %5i "
          "sample rate factor: %5i multiplier: %5i Sample_rate: %10.5g Activity: %0x I/O: %0x "
          "Quality: %0x #blks after: %5i time correction: %5i first data byte: %5i "
          "first blockette: %5i <%s>\n">(
        stream, blk.network_code, blk.stn_id, blk.loc_id, blk.chan_id, blk.start_time, blk.nsamps,
        blk.rate_f, blk.rate_m, blk.samp_rate, blk.activity, blk.io_flags, blk.quality,
        blk.blks_fol, blk.time_cor, blk.beg_data, blk.beg_blks, "data blockette");
}

} // namespace quarl
