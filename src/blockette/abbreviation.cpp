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
    scan_int(&in, 4, &blk->format_id);
    scan_int(&in, 3, &blk->data_type);
    scan_listed_count(&in, 2, &blk->num_keys);
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
    scan_int(&in, 4, &blk->comment_id);
    scan_char(&in, &blk->class_code);
    scan_var_str(&in, blk->comment);
    scan_int(&in, 3, &blk->units);
}

void parse_032(blk_032_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_int(&in, 2, &blk->source_id);
    scan_var_str(&in, blk->author);
    scan_var_str(&in, blk->catalog);
    scan_var_str(&in, blk->publisher);
}

void parse_033(blk_033_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_int(&in, 3, &blk->abbrev_id);
    scan_var_str(&in, blk->abbrev);
}

void parse_034(blk_034_t *blk, std::string_view buff)
{
    Cursor in(buff);
    scan_head(&in, blk);
    scan_int(&in, 3, &blk->unit_id);
    scan_var_str(&in, blk->unit_name);
    scan_var_str(&in, blk->unit_desc);
}

} // namespace quarl
