#pragma once

#include <string_view>

namespace lumiset {

/// True for a document in the subset of XML that preset files are written in: UTF-8 without control characters, one
/// root element, elements and attributes with ASCII names, comments, white space, one declaration at the start, the
/// five predefined references and those by number. No document type, no other text, no more than a few levels and some
/// thousand elements. Takes time in proportion to the length, and memory for a few levels of names.
///
/// The XML library assumes well-formed input: some malformed bytes keep it busy for ever, and nesting costs it stack.
/// So it is given only what passes here.
[[nodiscard]] bool isPresetMarkup(std::string_view text);

}  // namespace lumiset
