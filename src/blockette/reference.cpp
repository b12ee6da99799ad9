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
    scan_int(in, 4, &blk->lookup_key);
    scan_var_str(in, blk->response_name);
}

} // namespace

void parse_041(blk_041_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_entry(&in, blk);
    scan_char(&in, &blk->symmetry);
    scan_int(&in, 3, &blk->input_units);
    scan_int(&in, 3, &blk->output_units);
    scan_count(&in, 4, &blk->num_coef_promised);
    blk->num_coef = entries_held(in, blk->length, blk->num_coef_promised, Fir_Coefficient);
    allocate(blk->coef, blk->num_coef, "blk->coef");
    for (double &coef : blk->coef)
        scan_double(&in, Fir_Coefficient, &coef);
}

void parse_043(blk_043_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_entry(&in, blk);
    scan_char(&in, &blk->func_type);
    scan_int(&in, 3, &blk->input_units);
    scan_int(&in, 3, &blk->output_units);
    scan_double(&in, 12, &blk->normal_factor);
    scan_double(&in, 12, &blk->normal_freq);
    scan_count(&in, 3, &blk->num_zeros_promised);
    blk->num_zeros = entries_held(in, blk->length, blk->num_zeros_promised, Root);
    allocate(blk->zero, blk->num_zeros, "blk->zero");
    allocate(blk->zero_error, blk->num_zeros, "blk->zero_error");
    if (!scan_roots(&in, blk->num_zeros_promised, blk->num_zeros, blk->zero, blk->zero_error,
                    "paz zeros"))
        return;
    scan_count(&in, 3, &blk->num_poles_promised);
    blk->num_poles = entries_held(in, blk->length, blk->num_poles_promised, Root);
    allocate(blk->pole, blk->num_poles, "blk->pole");
    allocate(blk->pole_error, blk->num_poles, "blk->pole_error");
    (void)scan_roots(&in, blk->num_poles_promised, blk->num_poles, blk->pole, blk->pole_error,
                     "paz poles");
}

void parse_044(blk_044_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_entry(&in, blk);
    scan_char(&in, &blk->func_type);
    scan_int(&in, 3, &blk->input_units);
    scan_int(&in, 3, &blk->output_units);
    scan_count(&in, 4, &blk->num_numer_promised);
    blk->num_numer = entries_held(in, blk->length, blk->num_numer_promised, Coefficient);
    allocate(blk->numer_coef, blk->num_numer, "blk->numer_coef");
    allocate(blk->numer_error, blk->num_numer, "blk->numer_error");
    if (!scan_coefficients(&in, blk->num_numer_promised, blk->num_numer, blk->numer_coef,
                           blk->numer_error, "fir numerators"))
        return;
    scan_count(&in, 4, &blk->num_denom_promised);
    blk->num_denom = entries_held(in, blk->length, blk->num_denom_promised, Coefficient);
    allocate(blk->denom_coef, blk->num_denom, "blk->denom_coef");
    allocate(blk->denom_error, blk->num_denom, "blk->denom_error");
    (void)scan_coefficients(&in, blk->num_denom_promised, blk->num_denom, blk->denom_coef,
                            blk->denom_error, "fir denominators");
}

void parse_045(blk_045_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_entry(&in, blk);
    scan_int(&in, 3, &blk->input_units);
    scan_int(&in, 3, &blk->output_units);
    scan_count(&in, 4, &blk->num_resp_promised);
    blk->num_resp = entries_held(in, blk->length, blk->num_resp_promised, Point);
    allocate(blk->frequency, blk->num_resp, "blk->frequency");
    allocate(blk->amplitude, blk->num_resp, "blk->amplitude");
    allocate(blk->amplitude_error, blk->num_resp, "blk->amplitude_error");
    allocate(blk->phase, blk->num_resp, "blk->phase");
    allocate(blk->phase_error, blk->num_resp, "blk->phase_error");
    (void)scan_list(&in, {blk->num_resp_promised, blk->num_resp, Point}, "fap response",
                    [&](int i) {
                        scan_double(&in, 12, &blk->frequency[i]);
                        scan_double(&in, 12, &blk->amplitude[i]);
                        scan_double(&in, 12, &blk->amplitude_error[i]);
                        scan_double(&in, 12, &blk->phase[i]);
                        scan_double(&in, 12, &blk->phase_error[i]);
                    });
}

void parse_046(blk_046_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_entry(&in, blk);
    scan_int(&in, 3, &blk->input_units);
    scan_int(&in, 3, &blk->output_units);
    scan_count(&in, 4, &blk->num_corners_promised);
    blk->num_corners = entries_held(in, blk->length, blk->num_corners_promised, Corner);
    allocate(blk->corner_freq, blk->num_corners, "blk->corner_freq");
    allocate(blk->corner_slope, blk->num_corners, "blk->corner_slope");
    (void)scan_list(&in, {blk->num_corners_promised, blk->num_corners, Corner}, "corners",
                    [&](int i) {
                        scan_double(&in, 12, &blk->corner_freq[i]);
                        scan_double(&in, 12, &blk->corner_slope[i]);
                    });
}

void parse_047(blk_047_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_entry(&in, blk);
    scan_double(&in, 10, &blk->samprate);
    scan_int(&in, 5, &blk->dec_factor);
    scan_int(&in, 5, &blk->dec_offset);
    scan_double(&in, 11, &blk->delay);
    scan_double(&in, 11, &blk->correction);
}

void parse_048(blk_048_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_entry(&in, blk);
    scan_double(&in, 12, &blk->gain);
    scan_double(&in, 12, &blk->freq);
    scan_count(&in, 2, &blk->num_history_promised);
    blk->num_history = entries_held(in, blk->length, blk->num_history_promised, Calibration);
    allocate(blk->calibration_gain, blk->num_history, "blk->calibration_gain");
    allocate(blk->calibration_freq, blk->num_history, "blk->calibration_freq");
    allocate(blk->calibration_time, blk->num_history, "blk->calibration_time");
    (void)scan_list(&in, {blk->num_history_promised, blk->num_history, Calibration}, "history",
                    [&](int i) {
                        scan_double(&in, 12, &blk->calibration_gain[i]);
                        scan_double(&in, 12, &blk->calibration_freq[i]);
                        scan_var_str(&in, blk->calibration_time[i].text);
                    });
}

void parse_060(blk_060_t *blk, std::string_view buff)
{
    constexpr std::size_t Shortest = 4; // a stage without keys
    constexpr int Key = 4;
    Cursor in(buff);
    scan_head(&in, blk);
    scan_count(&in, 2, &blk->num_stages_promised);
    blk->num_stages = entries_held(in, blk->length, blk->num_stages_promised, Shortest);
    allocate(blk->stage, blk->num_stages, "blk->stage");
    stamp_channel(blk);
    (void)scan_list(
        &in, {blk->num_stages_promised, blk->num_stages, Shortest}, "stages", [&](int i) {
            blk_060_t::Stage &stage = blk->stage[i];
            scan_int(&in, 2, &stage.stage_num);
            scan_count(&in, 2, &stage.num_keys_promised);
            const int held = entries_held(in, blk->length, stage.num_keys_promised, Key);
            allocate(stage.lookup_key, held, "blk->lookup_key");
            for (int &key : stage.lookup_key)
                scan_int(&in, Key, &key);
            in.advance(std::size_t{Key} * static_cast<std::size_t>(stage.num_keys_promised - held));
        });
}

} // namespace quarl
