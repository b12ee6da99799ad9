// Responses: poles and zeros, coefficients, response list, generic, decimation, sensitivity or
// gain.
#include "blockette/blockette.h"
#include "blockette/scan.h"
#include "blockette/scan_response.h"

namespace quarl
{

namespace
{

/// All of a sensitivity but its history.
void scan_sensitivity(Cursor *in, blk_058_t *blk)
{
    scan_head(in, blk);
    scan_int(in, 2, &blk->stage_num);
    scan_double(in, 12, &blk->gain);
    scan_double(in, 12, &blk->freq);
}

} // namespace

void parse_053(blk_053_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_char(&in, &blk->func_type);
    scan_int(&in, 2, &blk->stage_num);
    scan_int(&in, 3, &blk->input_units);
    scan_int(&in, 3, &blk->output_units);
    scan_double(&in, 12, &blk->normal_factor);
    scan_double(&in, 12, &blk->normal_freq);
    scan_listed_count(&in, 3, &blk->num_zeros);
    stamp_channel(blk);
    blk->num_zeros_held = entries_held(in, blk->length, blk->num_zeros, Root);
    allocate(blk->zero, blk->num_zeros, "blk->zero");
    allocate(blk->zero_error, blk->num_zeros, "blk->zero_error");
    if (!scan_roots(&in, blk->num_zeros, entries_begun(in, blk->num_zeros, Root), blk->zero,
                    blk->zero_error, "paz zeros"))
        return;
    scan_listed_count(&in, 3, &blk->num_poles);
    blk->num_poles_held = entries_held(in, blk->length, blk->num_poles, Root);
    allocate(blk->pole, blk->num_poles, "blk->pole");
    allocate(blk->pole_error, blk->num_poles, "blk->pole_error");
    (void)scan_roots(&in, blk->num_poles, entries_begun(in, blk->num_poles, Root), blk->pole,
                     blk->pole_error, "paz poles");
}

void parse_054(blk_054_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_char(&in, &blk->func_type);
    scan_int(&in, 2, &blk->stage_num);
    scan_int(&in, 3, &blk->input_units);
    scan_int(&in, 3, &blk->output_units);
    scan_listed_count(&in, 4, &blk->num_numer);
    blk->num_numer_held = entries_held(in, blk->length, blk->num_numer, Coefficient);
    allocate(blk->numer_coef, blk->num_numer, "blk->numer_coef");
    allocate(blk->numer_error, blk->num_numer, "blk->numer_error");
    stamp_channel(blk);
    if (!scan_coefficients(&in, blk->num_numer, entries_begun(in, blk->num_numer, Coefficient),
                           blk->numer_coef, blk->numer_error, "fir numerators"))
        return;
    scan_listed_count(&in, 4, &blk->num_denom);
    blk->num_denom_held = entries_held(in, blk->length, blk->num_denom, Coefficient);
    allocate(blk->denom_coef, blk->num_denom, "blk->denom_coef");
    allocate(blk->denom_error, blk->num_denom, "blk->denom_error");
    (void)scan_coefficients(&in, blk->num_denom, entries_begun(in, blk->num_denom, Coefficient),
                            blk->denom_coef, blk->denom_error, "fir denominators");
}

void parse_055(blk_055_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_int(&in, 2, &blk->stage_num);
    scan_int(&in, 3, &blk->input_units);
    scan_int(&in, 3, &blk->output_units);
    scan_listed_count(&in, 4, &blk->num_resp);
    blk->num_resp_held = entries_held(in, blk->length, blk->num_resp, Point);
    allocate(blk->frequency, blk->num_resp, "blk->frequency");
    allocate(blk->amplitude, blk->num_resp, "blk->amplitude");
    allocate(blk->amplitude_error, blk->num_resp, "blk->amplitude_error");
    allocate(blk->phase, blk->num_resp, "blk->phase");
    allocate(blk->phase_error, blk->num_resp, "blk->phase_error");
    stamp_channel(blk);
    (void)scan_list(&in, {blk->num_resp, entries_begun(in, blk->num_resp, Point), Point},
                    "fap response", [&](int i) {
                        scan_double(&in, 12, &blk->frequency[i]);
                        scan_double(&in, 12, &blk->amplitude[i]);
                        scan_double(&in, 12, &blk->amplitude_error[i]);
                        scan_double(&in, 12, &blk->phase[i]);
                        scan_double(&in, 12, &blk->phase_error[i]);
                    });
}

void parse_056(blk_056_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_int(&in, 2, &blk->stage_num);
    scan_int(&in, 3, &blk->input_units);
    scan_int(&in, 3, &blk->output_units);
    scan_count(&in, 4, &blk->num_corners_promised);
    blk->num_corners = entries_held(in, blk->length, blk->num_corners_promised, Corner);
    allocate(blk->corner_freq, blk->num_corners, "blk->corner_freq");
    allocate(blk->corner_slope, blk->num_corners, "blk->corner_slope");
    stamp_channel(blk);
    (void)scan_list(&in, {blk->num_corners_promised, blk->num_corners, Corner}, "corners",
                    [&](int i) {
                        scan_double(&in, 12, &blk->corner_freq[i]);
                        scan_double(&in, 12, &blk->corner_slope[i]);
                    });
}

void parse_057(blk_057_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_int(&in, 2, &blk->stage_num);
    scan_double(&in, 10, &blk->samprate);
    scan_int(&in, 5, &blk->dec_factor);
    scan_int(&in, 5, &blk->dec_offset);
    scan_double(&in, 11, &blk->delay);
    scan_double(&in, 11, &blk->correction);
    stamp_channel(blk);
    blk->sample_rate = 0.0; // the stage's own rate is what counts
}

void parse_058(blk_058_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_sensitivity(&in, blk);
    stamp_channel(blk);
    blk->units_signal = parsing().blk_052.units_signal;
}

void read_whole(blk_058_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_sensitivity(&in, blk);
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

} // namespace quarl
