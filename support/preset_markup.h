#pragma once

#include <string_view>

class TiXmlDocument;

namespace lumiset {

/// Adds the root element of a document in the subset of XML that preset files are written in: UTF-8 without control
/// characters, one root element, elements and attributes with ASCII names, comments, white space, one declaration at
/// the start, the five predefined references and those by number. No document type, no other text, no more than a few
/// levels and some thousand elements. False for any other text; the document may then hold a part. Takes time in
/// proportion to the length.
///
/// The XML library's own parser assumes well-formed input: some malformed bytes keep it busy for ever, nesting costs it
/// stack, and it loses what it has read when memory runs out. So its tree is built here.
[[nodiscard]] bool readPresetMarkup(std::string_view text, TiXmlDocument& document);

}  // namespace lumiset
