// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace marvik::lookup {

/// How deep the guard lets elements nest. The parser walks its stack of open
/// elements for many tags, so its work per tag grows with the depth; no
/// callbook page comes near this.
inline constexpr int kMaxMarkupDepth = 64;

/// What guardMarkup() did to a page.
struct MarkupGuardResult
{
    bool changed = false;     ///< `out` holds the page to parse; else parse the page as it is
    bool tagsLeftOut = false;     ///< start tags too deep were left out: the tree is not the page's
    bool strayTagsLeftOut = false; ///< end tags that close nothing were left out
    bool stopped = false;     ///< `shouldStop` said so before the end; `out` is unusable
};

/// Prepares a page for the HTML parser so that parsing takes time in
/// proportion to the page's size, whatever the page is made of. One pass
/// follows the tags the way the parser's tokenizer reads them and keeps an
/// outline of its stack of open elements:
/// - start tags that would nest deeper than kMaxMarkupDepth are left out,
///   with their end tags;
/// - while the stack is deep, end tags that close nothing are left out (the
///   parser would walk the whole stack for each);
/// - attributes are left out except the few the rendered text depends on
///   (style, hidden, open, and the ones the parser itself reads), and each
///   of those is kept once; many attributes cost the parser time per
///   attribute and per pair of attributes.
/// What an ordinary page renders to is not changed. `shouldStop`, when
/// given, is asked now and then whether to give up.
MarkupGuardResult guardMarkup(std::string_view page, std::string &out,
                              const std::function<bool()> &shouldStop = {});

} // namespace marvik::lookup
