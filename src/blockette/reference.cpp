// Responses by reference: the response dictionary and a channel's references to it.
#include "blockette/blockette.h"
#include "blockette/scan.h"
#include "blockette/scan_response.h"

namespace quarl
{

namespace
{

constexpr int Fir_Coefficient = 14; ///< characters

/// Key and name, with which every entry of the response dictionary begins.
template <class Blk> void scan_entry(Cursor *in, Blk *blk)
{
    scan_head(in, blk);
    blk->lookup_key = scan_int(in, 4);
    scan_var_str(in, blk->response_name);
}

} // namespace

void parse_041(blk_041_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_entry(&in, blk);
    blk->symmetry = scan_char(&in);
    blk->input_units = scan_int(&in, 3);
    blk->output_units = scan_int(&in, 3);
    blk->num_coef_promised = scan_count(&in, 4);
    const auto end = static_cast<std::size_t>(std::max(blk->length, 0));
    while (blk->num_coef < blk->num_coef_promised && in.position() + Fir_Coefficient <= end &&
           !parsing().Bad_blkflag) {
        blk->coef.push_back(scan_double(&in, Fir_Coefficient));
        ++blk->num_coef;
    }
}

void parse_043(blk_043_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_entry(&in, blk);
    blk->func_type = scan_char(&in);
    blk->input_units = scan_int(&in, 3);
    blk->output_units = scan_int(&in, 3);
    blk->normal_factor = scan_double(&in, 12);
    blk->normal_freq = scan_double(&in, 12);
    blk->num_zeros_promised = scan_count(&in, 3);
    blk->num_zeros = entries_held(in, blk->length, blk->num_zeros_promised, Root);
    allocate(blk->zero, blk->num_zeros, "blk->zero");
    allocate(blk->zero_error, blk->num_zeros, "blk->zero_error");
    if (!scan_roots(&in, blk->num_zeros, blk->zero, blk->zero_error, "paz zeros"))
        return;
    in.advance(Root * (blk->num_zeros_promised - blk->num_zeros));
    blk->num_poles_promised = scan_count(&in, 3);
    blk->num_poles = entries_held(in, blk->length, blk->num_poles_promised, Root);
    allocate(blk->pole, blk->num_poles, "blk->pole");
    allocate(blk->pole_error, blk->num_poles, "blk->pole_error");
    if (scan_roots(&in, blk->num_poles, blk->pole, blk->pole_error, "paz poles"))
        in.advance(Root * (blk->num_poles_promised - blk->num_poles));
}

void parse_044(blk_044_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_entry(&in, blk);
    blk->func_type = scan_char(&in);
    blk->input_units = scan_int(&in, 3);
    blk->output_units = scan_int(&in, 3);
    blk->num_numer_promised = scan_count(&in, 4);
    blk->num_numer = entries_held(in, blk->length, blk->num_numer_promised, Coefficient);
    allocate(blk->numer_coef, blk->num_numer, "blk->numer_coef");
    allocate(blk->numer_error, blk->num_numer, "blk->numer_error");
    if (!scan_coefficients(&in, blk->num_numer, blk->numer_coef, blk->numer_error,
                           "fir numerators"))
        return;
    in.advance(Coefficient * (blk->num_numer_promised - blk->num_numer));
    blk->num_denom_promised = scan_count(&in, 4);
    blk->num_denom = entries_held(in, blk->length, blk->num_denom_promised, Coefficient);
    allocate(blk->denom_coef, blk->num_denom, "blk->denom_coef");
    allocate(blk->denom_error, blk->num_denom, "blk->denom_error");
    if (scan_coefficients(&in, blk->num_denom, blk->denom_coef, blk->denom_error,
                          "fir denominators"))
        in.advance(Coefficient * (blk->num_denom_promised - blk->num_denom));
}

void parse_045(blk_045_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_entry(&in, blk);
    blk->input_units = scan_int(&in, 3);
    blk->output_units = scan_int(&in, 3);
    blk->num_resp_promised = scan_count(&in, 4);
    blk->num_resp = entries_held(in, blk->length, blk->num_resp_promised, Point);
    allocate(blk->frequency, blk->num_resp, "blk->frequency");
    allocate(blk->amplitude, blk->num_resp, "blk->amplitude");
    allocate(blk->amplitude_error, blk->num_resp, "blk->amplitude_error");
    allocate(blk->phase, blk->num_resp, "blk->phase");
    allocate(blk->phase_error, blk->num_resp, "blk->phase_error");
    const bool sound = scan_list(blk->num_resp, "fap response", [&](int i) {
        blk->frequency[i] = scan_double(&in, 12);
        blk->amplitude[i] = scan_double(&in, 12);
        blk->amplitude_error[i] = scan_double(&in, 12);
        blk->phase[i] = scan_double(&in, 12);
        blk->phase_error[i] = scan_double(&in, 12);
    });
    if (sound)
        in.advance(Point * (blk->num_resp_promised - blk->num_resp));
}

void parse_046(blk_046_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_entry(&in, blk);
    blk->input_units = scan_int(&in, 3);
    blk->output_units = scan_int(&in, 3);
    blk->num_corners_promised = scan_count(&in, 4);
    blk->num_corners = entries_held(in, blk->length, blk->num_corners_promised, Corner);
    allocate(blk->corner_freq, blk->num_corners, "blk->corner_freq");
    allocate(blk->corner_slope, blk->num_corners, "blk->corner_slope");
    const bool sound = scan_list(blk->num_corners, "corners", [&](int i) {
        blk->corner_freq[i] = scan_double(&in, 12);
        blk->corner_slope[i] = scan_double(&in, 12);
    });
    if (sound)
        in.advance(Corner * (blk->num_corners_promised - blk->num_corners));
}

void parse_047(blk_047_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_entry(&in, blk);
    blk->samprate = scan_double(&in, 10);
    blk->dec_factor = scan_int(&in, 5);
    blk->dec_offset = scan_int(&in, 5);
    blk->delay = scan_double(&in, 11);
    blk->correction = scan_double(&in, 11);
}

void parse_048(blk_048_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_entry(&in, blk);
    blk->gain = scan_double(&in, 12);
    blk->freq = scan_double(&in, 12);
    blk->num_history_promised = scan_count(&in, 2);
    blk->num_history = entries_held(in, blk->length, blk->num_history_promised, Calibration);
    allocate(blk->calibration_gain, blk->num_history, "blk->calibration_gain");
    allocate(blk->calibration_freq, blk->num_history, "blk->calibration_freq");
    allocate(blk->calibration_time, blk->num_history, "blk->calibration_time");
    const bool sound = scan_list(blk->num_history, "history", [&](int i) {
        blk->calibration_gain[i] = scan_double(&in, 12);
        blk->calibration_freq[i] = scan_double(&in, 12);
        scan_var_str(&in, blk->calibration_time[i].text);
    });
    if (sound)
        in.advance(Calibration * (blk->num_history_promised - blk->num_history));
}

void parse_060(blk_060_t *blk, std::string_view buff)
{
    constexpr std::size_t Shortest = 4; // a stage without keys
    constexpr std::size_t Key = 4;
    Cursor in(buff);
    scan_head(&in, blk);
    blk->num_stages_promised = scan_count(&in, 2);
    blk->num_stages = entries_held(in, blk->length, blk->num_stages_promised, Shortest);
    allocate(blk->stage, blk->num_stages, "blk->stage");
    stamp_channel(blk);
    const bool sound = scan_list(blk->num_stages, "stages", [&](int i) {
        blk->stage[i].stage_num = scan_int(&in, 2);
        const int promised = scan_count(&in, 2);
        const int held = entries_held(in, blk->length, promised, Key);
        allocate(blk->stage[i].lookup_key, held, "blk->lookup_key");
        for (int &key : blk->stage[i].lookup_key)
            key = scan_int(&in, 4);
        in.advance(Key * (promised - held));
    });
    if (sound)
        in.advance(Shortest * (blk->num_stages_promised - blk->num_stages));
}

} // namespace quarl
