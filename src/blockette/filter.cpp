// Channel comments, FIR filters and polynomial responses.
#include "blockette/blockette.h"
#include "blockette/scan.h"
#include "blockette/scan_response.h"

namespace quarl
{

namespace
{

constexpr std::size_t Fir_Coefficient = 14; ///< characters
constexpr int Listed_Count = 4;             ///< characters of a polynomial's count in the listing

/// All of a polynomial in front of its count.
void scan_polynomial(Cursor *in, blk_062_t *blk)
{
    scan_head(in, blk);
    scan_char(in, &blk->transfer_function_type);
    scan_int(in, 2, &blk->stage_num);
    scan_int(in, 3, &blk->input_units);
    scan_int(in, 3, &blk->output_units);
    scan_char(in, &blk->polynomial_approximation_type);
    scan_char(in, &blk->valid_frequency_units);
    scan_double(in, 12, &blk->lower_valid_frequency_bound);
    scan_double(in, 12, &blk->upper_valid_frequency_bound);
    scan_double(in, 12, &blk->lower_bound_of_approximation);
    scan_double(in, 12, &blk->upper_bound_of_approximation);
    scan_double(in, 12, &blk->maximum_absolute_error);
}

/// The characters that a polynomial's count takes: three, unless four make the blockette as long as
/// it is.
int count_width(const Cursor &in, int length)
{
    const std::string_view four = in.rest().substr(0, Listed_Count);
    const int count = to_int(up_to_nul(four));
    const bool fits = count > 0 && in.position() + Listed_Count + count * Coefficient ==
                                       static_cast<std::size_t>(std::max(length, 0));
    return fits ? Listed_Count : Listed_Count - 1;
}

} // namespace

void parse_059(blk_059_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_var_str(&in, blk->beg_time);
    scan_var_str(&in, blk->end_time);
    scan_int(&in, 4, &blk->comment_key);
    scan_int(&in, 6, &blk->comment_level);
    stamp_channel(blk);
}

void parse_061(blk_061_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_int(&in, 2, &blk->stage_num);
    scan_var_str(&in, blk->response_name);
    scan_char(&in, &blk->symmetry);
    scan_int(&in, 3, &blk->input_units);
    scan_int(&in, 3, &blk->output_units);
    scan_listed_count(&in, 4, &blk->num_coef);
    blk->num_coef_held = entries_held(in, blk->length, blk->num_coef, Fir_Coefficient);
    allocate(blk->coef, blk->num_coef, "blk->coef");
    stamp_channel(blk);
    (void)scan_list(
        &in, {blk->num_coef, entries_begun(in, blk->num_coef, Fir_Coefficient), Fir_Coefficient},
        "061 fir coefficient", [&](int i) { scan_double(&in, 14, &blk->coef[i]); });
}

void parse_062(blk_062_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_polynomial(&in, blk);
    scan_listed_count(&in, Listed_Count, &blk->num_coef_listed);
    allocate(blk->coef_listed, blk->num_coef_listed, "blk->coef");
    allocate(blk->coef_error_listed, blk->num_coef_listed, "blk->coef_error");
    stamp_channel(blk);
    const int there = entries_begun(in, blk->num_coef_listed, Coefficient);
    (void)scan_list(&in, {blk->num_coef_listed, there, Coefficient}, "062 fir coefficient",
                    [&](int i) {
                        scan_double(&in, 12, &blk->coef_listed[i]);
                        scan_double(&in, 12, &blk->coef_error_listed[i]);
                    });
}

void read_whole(blk_062_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_polynomial(&in, blk);
    scan_count(&in, count_width(in, blk->length), &blk->num_coef_promised);
    blk->num_coef = entries_held(in, blk->length, blk->num_coef_promised, Coefficient);
    allocate(blk->coef, blk->num_coef, "blk->coef");
    allocate(blk->coef_error, blk->num_coef, "blk->coef_error");
    (void)scan_list(&in, {blk->num_coef_promised, blk->num_coef, Coefficient}, "coefficients",
                    [&](int i) {
                        scan_double(&in, 12, &blk->coef[i]);
                        scan_double(&in, 12, &blk->coef_error[i]);
                    });
}

} // namespace quarl
