// Channel comments, FIR filters and polynomial responses.
#include "blockette/blockette.h"
#include "blockette/scan.h"

namespace quarl
{

void parse_059(blk_059_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_var_str(&in, blk->beg_time);
    scan_var_str(&in, blk->end_time);
    blk->comment_key = scan_int(&in, 4);
    blk->comment_level = scan_int(&in, 6);
    stamp_channel(blk);
}

void parse_061(blk_061_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    blk->stage_num = scan_int(&in, 2);
    scan_var_str(&in, blk->response_name);
    blk->symmetry = scan_char(&in);
    blk->input_units = scan_int(&in, 3);
    blk->output_units = scan_int(&in, 3);
    blk->num_coef = scan_int(&in, 4);
    allocate(blk->coef, blk->num_coef, "blk->coef");
    stamp_channel(blk);
    (void)scan_list(blk->num_coef, "061 fir coefficient",
                    [&](int i) { blk->coef[i] = scan_double(&in, 14); });
}

void parse_062(blk_062_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    blk->transfer_function_type = scan_char(&in);
    blk->stage_num = scan_int(&in, 2);
    blk->input_units = scan_int(&in, 3);
    blk->output_units = scan_int(&in, 3);
    blk->polynomial_approximation_type = scan_char(&in);
    blk->valid_frequency_units = scan_char(&in);
    blk->lower_valid_frequency_bound = scan_double(&in, 12);
    blk->upper_valid_frequency_bound = scan_double(&in, 12);
    blk->lower_bound_of_approximation = scan_double(&in, 12);
    blk->upper_bound_of_approximation = scan_double(&in, 12);
    blk->maximum_absolute_error = scan_double(&in, 12);
    // Four digits: a writer that gives three shifts every coefficient by one character.
    blk->num_coef = scan_int(&in, 4);
    allocate(blk->coef, blk->num_coef, "blk->coef");
    allocate(blk->coef_error, blk->num_coef, "blk->coef_error");
    stamp_channel(blk);
    (void)scan_list(blk->num_coef, "062 fir coefficient", [&](int i) {
        blk->coef[i] = scan_double(&in, 12);
        blk->coef_error[i] = scan_double(&in, 12);
    });
}

} // namespace quarl
