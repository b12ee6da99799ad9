// Abbreviation dictionaries: data formats, comments, sources, generic and unit abbreviations.
#include "blockette/blockette.h"
#include "blockette/scan.h"

namespace quarl
{

namespace
{

/// A decoder key keeps at most 79 characters, less than its room.
constexpr std::size_t Key_Limit = 80;

} // namespace

void parse_030(blk_030_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_var_str(&in, blk->name);
    blk->format_id = scan_int(&in, 4);
    blk->data_type = scan_int(&in, 3);
    blk->num_keys = scan_listed_count(&in, 2);
    allocate(blk->decode_key, blk->num_keys, "blk->decode_key");
    for (blk_030_t::DecodeKey &key : blk->decode_key) {
        blk->num_keys_held += begins_within(in, blk->length);
        scan_var_str(&in, key.text, Key_Limit);
    }
}

void parse_031(blk_031_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    blk->comment_id = scan_int(&in, 4);
    blk->class_code = scan_char(&in);
    scan_var_str(&in, blk->comment);
    blk->units = scan_int(&in, 3);
}

void parse_032(blk_032_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    blk->source_id = scan_int(&in, 2);
    scan_var_str(&in, blk->author);
    scan_var_str(&in, blk->catalog);
    scan_var_str(&in, blk->publisher);
}

void parse_033(blk_033_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    blk->abbrev_id = scan_int(&in, 3);
    scan_var_str(&in, blk->abbrev);
}

void parse_034(blk_034_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    blk->unit_id = scan_int(&in, 3);
    scan_var_str(&in, blk->unit_name);
    scan_var_str(&in, blk->unit_desc);
}

} // namespace quarl
