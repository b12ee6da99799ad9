// Reads volumes written down as text, one step per line. Steps and the characters of blockettes:
//
//   # comment                     also after blank lines; not behind a step
//   records 4096                  length of the logical records from here on
//   header V                      the next blockette starts a record of this type
//   sequence 12                   number of the next record; six other characters stand as they are
//   030 Steim2~|0001|050|00       type and fields; `|` only separates them and is dropped
//   030:9999 Steim2~              the same with these length digits
//   text 0AB0010xyz               characters of control records without a prefix of their own
//   pad [N]                       fill the record with blanks, then add N records of blanks
//   data sta=ANMO chan=BHZ ...    a data record; the keys are those of the table in recipe.cpp;
//                                 blk=395/t:2024,001,00:00:00.0000/z2 adds a blockette
//   raw 000001V                   bytes outside of any record
//   cut N / truncate N            drop the last N bytes of the file / keep its first N
//   file                          the next input file begins
//
// A line that begins with a blank continues the one before, its indentation dropped. In characters
// \s is a blank, \n a newline, \\ a backslash, \xHH a byte and \{60x} sixty times x.
#pragma once

#include "compose/volume.h"

#include <string_view>

/// Throws std::runtime_error naming the line of a recipe that cannot be followed.
VolumeBuilder parse_recipe(std::string_view recipe);
