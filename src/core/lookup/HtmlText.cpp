// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/HtmlText.h"

#include "core/app/Log.h"
#include "core/app/TextCodec.h"
#include "core/lookup/MarkupGuard.h"

#include <QStringDecoder>

#include <gumbo.h>

#include <algorithm>
#include <csetjmp>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace marvik::lookup {

namespace {

// ---------------------------------------------------------------------------
// Character sets

QByteArray lowerTrimmed(QByteArrayView label)
{
    return label.trimmed().toByteArray().toLower();
}

/// The charset parameter of a Content-Type value ("text/html; charset=UTF-8").
QByteArray charsetParameter(QByteArrayView value)
{
    const QByteArray lower = value.toByteArray().toLower();
    qsizetype at = lower.indexOf("charset");
    while (at >= 0) {
        qsizetype i = at + 7;
        while (i < lower.size() && (lower[i] == ' ' || lower[i] == '\t'))
            ++i;
        if (i < lower.size() && lower[i] == '=') {
            ++i;
            while (i < lower.size() && (lower[i] == ' ' || lower[i] == '\t'))
                ++i;
            char quote = 0;
            if (i < lower.size() && (lower[i] == '"' || lower[i] == '\''))
                quote = lower[i++];
            qsizetype end = i;
            while (end < lower.size() && lower[end] != quote && lower[end] != ';' && lower[end] != ' '
                   && lower[end] != '\t' && (quote || (lower[end] != '"' && lower[end] != '\'')))
                ++end;
            return lower.mid(i, end - i);
        }
        at = lower.indexOf("charset", at + 7);
    }
    return {};
}

bool isSpaceByte(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r';
}

/// Compares ASCII case-insensitively with a lower-case name.
bool equalsLower(std::string_view text, std::string_view lower)
{
    return text.size() == lower.size()
        && std::equal(text.begin(), text.end(), lower.begin(),
                      [](char a, char b) { return (a >= 'A' && a <= 'Z' ? char(a | 0x20) : a) == b; });
}

/// The attributes of one tag in a byte prescan, lower-cased names.
struct MetaAttributes
{
    QByteArray charset;
    QByteArray content;
    bool httpEquivContentType = false;
};

/// Reads the attributes of a tag whose name ends at `i`; returns the position
/// after the tag.
qsizetype readAttributes(QByteArrayView bytes, qsizetype i, MetaAttributes &meta)
{
    const qsizetype n = bytes.size();
    while (i < n) {
        while (i < n && (isSpaceByte(bytes[i]) || bytes[i] == '/'))
            ++i;
        if (i >= n || bytes[i] == '>')
            return i + 1;
        qsizetype nameStart = i;
        while (i < n && !isSpaceByte(bytes[i]) && bytes[i] != '=' && bytes[i] != '>' && bytes[i] != '/')
            ++i;
        const QByteArray name = bytes.sliced(nameStart, i - nameStart).toByteArray().toLower();
        while (i < n && isSpaceByte(bytes[i]))
            ++i;
        QByteArray value;
        if (i < n && bytes[i] == '=') {
            ++i;
            while (i < n && isSpaceByte(bytes[i]))
                ++i;
            if (i < n && (bytes[i] == '"' || bytes[i] == '\'')) {
                const char quote = bytes[i++];
                const qsizetype start = i;
                while (i < n && bytes[i] != quote)
                    ++i;
                value = bytes.sliced(start, i - start).toByteArray();
                if (i < n)
                    ++i;
            } else {
                const qsizetype start = i;
                while (i < n && !isSpaceByte(bytes[i]) && bytes[i] != '>')
                    ++i;
                value = bytes.sliced(start, i - start).toByteArray();
            }
        }
        if (name == "charset" && meta.charset.isEmpty())
            meta.charset = lowerTrimmed(value);
        else if (name == "content" && meta.content.isEmpty())
            meta.content = value;
        else if (name == "http-equiv")
            meta.httpEquivContentType = lowerTrimmed(value) == "content-type";
    }
    return n;
}

/// The charset a page declares in a <meta> near its start, found the way a
/// browser's prescan does it (the first 1024 bytes, comments skipped).
QByteArray metaCharset(QByteArrayView bytes)
{
    const QByteArrayView head = bytes.first(std::min<qsizetype>(bytes.size(), 1024));
    const qsizetype n = head.size();
    qsizetype i = 0;
    while (i < n) {
        if (head.sliced(i).startsWith("<!--")) {
            const qsizetype end = head.indexOf("-->", i + 4);
            if (end < 0)
                return {};
            i = end + 3;
        } else if (i + 5 < n && head[i] == '<' && (head[i + 1] | 0x20) == 'm' && (head[i + 2] | 0x20) == 'e'
                   && (head[i + 3] | 0x20) == 't' && (head[i + 4] | 0x20) == 'a'
                   && (isSpaceByte(head[i + 5]) || head[i + 5] == '/')) {
            MetaAttributes meta;
            i = readAttributes(head, i + 5, meta);
            if (!meta.charset.isEmpty())
                return meta.charset;
            if (meta.httpEquivContentType) {
                const QByteArray fromContent = charsetParameter(meta.content);
                if (!fromContent.isEmpty())
                    return fromContent;
            }
        } else {
            ++i;
        }
    }
    return {};
}

bool isWindows1252Label(const QByteArray &label)
{
    static const char *const labels[] = {"windows-1252", "cp1252", "x-cp1252", "iso-8859-1", "iso8859-1",
                                         "iso_8859-1", "iso-ir-100", "latin1", "l1", "ibm819", "cp819",
                                         "csisolatin1", "us-ascii", "ascii", "ansi_x3.4-1968", "iso88591",
                                         "iso_8859-1:1987", "x-user-defined"};
    return std::any_of(std::begin(labels), std::end(labels), [&](const char *l) { return label == l; });
}

bool isUtf8Label(const QByteArray &label)
{
    return label == "utf-8" || label == "utf8" || label == "unicode-1-1-utf-8" || label == "unicode11utf8"
        || label == "unicode20utf8" || label == "x-unicode20utf8";
}

/// Settles a declared label on one we can decode with: UTF-8, Windows-1252, or
/// another that the converters know. `fromMeta`: a page cannot declare itself
/// UTF-16 in its own bytes; browsers read that as UTF-8.
QByteArray settleLabel(const QByteArray &label, bool fromMeta)
{
    if (label.isEmpty() || isWindows1252Label(label))
        return QByteArrayLiteral("windows-1252");
    if (isUtf8Label(label))
        return QByteArrayLiteral("utf-8");
    if (fromMeta && label.startsWith("utf-16"))
        return QByteArrayLiteral("utf-8");
    QStringDecoder probe(label.constData());
    if (probe.isValid())
        return label;
    qCDebug(lcLookup) << "unknown page charset" << label << "- reading it as windows-1252";
    return QByteArrayLiteral("windows-1252");
}

// ---------------------------------------------------------------------------
// Parsing and rendered text

/// What the parser may allocate for a page: above what the densest markup
/// needs (a few hundred bytes per element, an element and a text in every
/// four bytes: about 100 bytes per byte of page), and a floor for small
/// pages.
constexpr std::size_t kArenaFloor = 64 * 1024 * 1024;
constexpr std::size_t kArenaPerByte = 128;

PageTextError limitReached(const DecodeLimits &limits)
{
    if (limits.cancelled && limits.cancelled->load(std::memory_order_relaxed))
        return PageTextError::Cancelled;
    if (limits.deadline.hasExpired())
        return PageTextError::OutOfTime;
    return PageTextError::None;
}

/// A bump allocator for gumbo with a budget: the whole tree is released at
/// once, so no node is ever freed one by one (gumbo frees its trees
/// recursively, which deep nesting would turn into a stack overflow). The
/// budget is in proportion to the page: markup that makes the parser build
/// far more than the page holds (formatting elements reopened in every
/// paragraph, say) is not a callbook page. The same hook stops a parse whose
/// deadline has passed or that its caller no longer wants, since gumbo itself
/// cannot be asked to stop: the allocator jumps out of it, and everything it
/// had is in the arena.
class Arena
{
public:
    Arena(std::size_t budget, const DecodeLimits &limits)
        : m_budget(budget)
        , m_limits(limits)
    {
        // No allocation of ours may fail inside gumbo: room for every block
        // the budget allows is taken up front.
        m_blocks.reserve(budget / (kBlockSize / 4) + 16);
    }

    Arena(const Arena &) = delete;
    Arena &operator=(const Arena &) = delete;

    ~Arena()
    {
        for (void *block : m_blocks)
            std::free(block);
    }

    void *allocate(std::size_t size)
    {
        size = (size + 15) & ~std::size_t(15);
        m_used += size;
        if (m_used > m_budget)
            stop(PageTextError::TooComplex);
        // A clock read per thousand allocations costs nothing measurable
        // and still stops within a fraction of a millisecond.
        if ((++m_calls & 1023) == 0) {
            const PageTextError error = limitReached(m_limits);
            if (error != PageTextError::None)
                stop(error);
        }
        if (size > kBlockSize / 4)
            return newBlock(size);
        if (m_left < size) {
            m_next = static_cast<char *>(newBlock(kBlockSize));
            m_left = kBlockSize;
        }
        void *result = m_next;
        m_next += size;
        m_left -= size;
        return result;
    }

    /// Parses with gumbo; null when the arena stopped the parse (error()
    /// says why). Nothing here may own anything that needs destroying: the
    /// jump skips it.
    GumboOutput *parse(const GumboOptions &options, const char *data, std::size_t size)
    {
        if (setjmp(m_jump) != 0)
            return nullptr;
        return gumbo_parse_with_options(&options, data, size);
    }

    PageTextError error() const { return m_error; }

    static void *gumboAllocate(void *self, std::size_t size) { return static_cast<Arena *>(self)->allocate(size); }
    static void gumboFree(void *, void *) {}

private:
    static constexpr std::size_t kBlockSize = 256 * 1024;

    [[noreturn]] void stop(PageTextError error)
    {
        m_error = error;
        std::longjmp(m_jump, 1);
    }

    void *newBlock(std::size_t size)
    {
        void *block = std::malloc(size);
        if (!block)
            stop(PageTextError::TooComplex);
        m_blocks.push_back(block);
        return block;
    }

    std::jmp_buf m_jump{};
    std::size_t m_budget;
    std::size_t m_used = 0;
    unsigned m_calls = 0;
    const DecodeLimits &m_limits;
    PageTextError m_error = PageTextError::None;
    std::vector<void *> m_blocks;
    char *m_next = nullptr;
    std::size_t m_left = 0;
};

enum class Display { None, Inline, Block, ListItem, Table, Caption, RowGroup, Row, Cell };

bool isBlockLevel(Display d)
{
    return d == Display::Block || d == Display::ListItem || d == Display::Table || d == Display::Caption;
}

bool hasAttribute(const GumboElement &element, const char *name)
{
    return gumbo_get_attribute(&element.attributes, name) != nullptr;
}

std::string_view unknownTagName(const GumboElement &element)
{
    std::string_view raw(element.original_tag.data, element.original_tag.length);
    if (!raw.empty() && raw.front() == '<')
        raw.remove_prefix(1);
    std::size_t end = 0;
    while (end < raw.size() && !isSpaceByte(raw[end]) && raw[end] != '/' && raw[end] != '>')
        ++end;
    return raw.substr(0, end);
}

std::string_view trimmedView(std::string_view s)
{
    while (!s.empty() && isSpaceByte(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && isSpaceByte(s.back()))
        s.remove_suffix(1);
    return s;
}

/// The display a style attribute sets, if it sets one we act on.
bool styleDisplay(const GumboElement &element, Display &display)
{
    const GumboAttribute *style = gumbo_get_attribute(&element.attributes, "style");
    if (!style)
        return false;
    static const std::pair<std::string_view, Display> values[] = {
        {"none", Display::None},
        {"block", Display::Block},
        {"flow-root", Display::Block},
        {"flex", Display::Block},
        {"grid", Display::Block},
        {"inline", Display::Inline},
        {"inline-block", Display::Inline},
        {"inline-flex", Display::Inline},
        {"inline-grid", Display::Inline},
        {"inline-table", Display::Inline},
        {"contents", Display::Inline},
        {"list-item", Display::ListItem},
        {"table", Display::Table},
        {"table-caption", Display::Caption},
        {"table-row-group", Display::RowGroup},
        {"table-header-group", Display::RowGroup},
        {"table-footer-group", Display::RowGroup},
        {"table-row", Display::Row},
        {"table-cell", Display::Cell},
    };
    bool found = false;
    std::string_view rest(style->value);
    while (!rest.empty()) {
        const std::size_t semicolon = rest.find(';');
        const std::string_view declaration = rest.substr(0, semicolon);
        rest = semicolon == std::string_view::npos ? std::string_view() : rest.substr(semicolon + 1);
        const std::size_t colon = declaration.find(':');
        if (colon == std::string_view::npos || !equalsLower(trimmedView(declaration.substr(0, colon)), "display"))
            continue;
        std::string_view value = trimmedView(declaration.substr(colon + 1));
        const std::size_t bang = value.find('!');
        if (bang != std::string_view::npos)
            value = trimmedView(value.substr(0, bang));
        for (const auto &[name, d] : values) {
            if (equalsLower(value, name)) {
                display = d;
                found = true;
                break;
            }
        }
    }
    return found;
}

Display tagDisplay(const GumboElement &element)
{
    if (element.tag_namespace != GUMBO_NAMESPACE_HTML) {
        switch (element.tag) {
        case GUMBO_TAG_SCRIPT:
        case GUMBO_TAG_STYLE:
        case GUMBO_TAG_TITLE:
        case GUMBO_TAG_DESC:
            return Display::None;
        default:
            return Display::Inline;
        }
    }
    switch (element.tag) {
    // Not rendered, or replaced elements whose children are no text of theirs.
    case GUMBO_TAG_HEAD:
    case GUMBO_TAG_TITLE:
    case GUMBO_TAG_META:
    case GUMBO_TAG_LINK:
    case GUMBO_TAG_BASE:
    case GUMBO_TAG_STYLE:
    case GUMBO_TAG_SCRIPT:
    case GUMBO_TAG_TEMPLATE:
    case GUMBO_TAG_NOSCRIPT: // a browser with scripts on renders none of it
    case GUMBO_TAG_IFRAME:
    case GUMBO_TAG_EMBED:
    case GUMBO_TAG_IMG:
    case GUMBO_TAG_INPUT:
    case GUMBO_TAG_TEXTAREA:
    case GUMBO_TAG_AUDIO:
    case GUMBO_TAG_VIDEO:
    case GUMBO_TAG_CANVAS:
    case GUMBO_TAG_DATALIST:
    case GUMBO_TAG_AREA:
    case GUMBO_TAG_PARAM:
    case GUMBO_TAG_SOURCE:
    case GUMBO_TAG_TRACK:
    case GUMBO_TAG_RP:
    case GUMBO_TAG_NOEMBED:
    case GUMBO_TAG_NOFRAMES:
    case GUMBO_TAG_FRAME:
    case GUMBO_TAG_FRAMESET:
    case GUMBO_TAG_COL:
    case GUMBO_TAG_COLGROUP:
        return Display::None;
    case GUMBO_TAG_HTML:
    case GUMBO_TAG_BODY:
    case GUMBO_TAG_ADDRESS:
    case GUMBO_TAG_BLOCKQUOTE:
    case GUMBO_TAG_CENTER:
    case GUMBO_TAG_DIV:
    case GUMBO_TAG_FIGURE:
    case GUMBO_TAG_FIGCAPTION:
    case GUMBO_TAG_FOOTER:
    case GUMBO_TAG_FORM:
    case GUMBO_TAG_HEADER:
    case GUMBO_TAG_HR:
    case GUMBO_TAG_LEGEND:
    case GUMBO_TAG_LISTING:
    case GUMBO_TAG_MAIN:
    case GUMBO_TAG_P:
    case GUMBO_TAG_PLAINTEXT:
    case GUMBO_TAG_PRE:
    case GUMBO_TAG_XMP:
    case GUMBO_TAG_DETAILS:
    case GUMBO_TAG_SUMMARY:
    case GUMBO_TAG_ARTICLE:
    case GUMBO_TAG_ASIDE:
    case GUMBO_TAG_H1:
    case GUMBO_TAG_H2:
    case GUMBO_TAG_H3:
    case GUMBO_TAG_H4:
    case GUMBO_TAG_H5:
    case GUMBO_TAG_H6:
    case GUMBO_TAG_HGROUP:
    case GUMBO_TAG_NAV:
    case GUMBO_TAG_SECTION:
    case GUMBO_TAG_DIR:
    case GUMBO_TAG_DD:
    case GUMBO_TAG_DL:
    case GUMBO_TAG_DT:
    case GUMBO_TAG_MENU:
    case GUMBO_TAG_OL:
    case GUMBO_TAG_UL:
    case GUMBO_TAG_FIELDSET:
    case GUMBO_TAG_OPTGROUP:
    case GUMBO_TAG_OPTION:
        return Display::Block;
    case GUMBO_TAG_LI:
        return Display::ListItem;
    case GUMBO_TAG_TABLE:
        return Display::Table;
    case GUMBO_TAG_CAPTION:
        return Display::Caption;
    case GUMBO_TAG_THEAD:
    case GUMBO_TAG_TBODY:
    case GUMBO_TAG_TFOOT:
        return Display::RowGroup;
    case GUMBO_TAG_TR:
        return Display::Row;
    case GUMBO_TAG_TD:
    case GUMBO_TAG_TH:
        return Display::Cell;
    case GUMBO_TAG_UNKNOWN: {
        // Elements newer than the parser's tag table.
        const std::string_view name = unknownTagName(element);
        if (equalsLower(name, "dialog"))
            return hasAttribute(element, "open") ? Display::Block : Display::None;
        if (equalsLower(name, "search"))
            return Display::Block;
        return Display::Inline;
    }
    default:
        return Display::Inline;
    }
}

Display displayOf(const GumboNode *node)
{
    if (node->type == GUMBO_NODE_TEMPLATE)
        return Display::None;
    if (node->type != GUMBO_NODE_ELEMENT)
        return Display::Inline;
    const GumboElement &element = node->v.element;
    Display display = Display::Inline;
    if (styleDisplay(element, display))
        return display;
    if (element.tag_namespace == GUMBO_NAMESPACE_HTML && hasAttribute(element, "hidden"))
        return Display::None;
    return tagDisplay(element);
}

bool isElement(const GumboNode *node)
{
    return node->type == GUMBO_NODE_ELEMENT || node->type == GUMBO_NODE_TEMPLATE;
}

const GumboVector &childrenOf(const GumboNode *node)
{
    return node->v.element.children;
}

/// The last child of `parent` that makes a box of the given display.
const GumboNode *lastChildOf(const GumboNode *parent, Display wanted)
{
    const GumboVector &children = childrenOf(parent);
    for (unsigned i = children.length; i-- > 0;) {
        const auto *child = static_cast<const GumboNode *>(children.data[i]);
        if (isElement(child) && displayOf(child) == wanted)
            return child;
    }
    return nullptr;
}

/// The last row box of a table: rows straight in it or in its row groups.
const GumboNode *lastRowOf(const GumboNode *table)
{
    const GumboVector &children = childrenOf(table);
    for (unsigned i = children.length; i-- > 0;) {
        const auto *child = static_cast<const GumboNode *>(children.data[i]);
        if (!isElement(child))
            continue;
        const Display d = displayOf(child);
        if (d == Display::Row)
            return child;
        if (d == Display::RowGroup) {
            if (const GumboNode *row = lastChildOf(child, Display::Row))
                return row;
        }
    }
    return nullptr;
}

/// Collects the rendered text: strings and pending required line breaks, the
/// runs of breaks collapsed to their largest count, none at either end.
class TextCollector
{
public:
    void requireBreaks(int count)
    {
        m_pendingBreaks = std::max(m_pendingBreaks, count);
        endLine();
    }

    void endLine()
    {
        m_pendingSpace = false;
        m_lineStart = true;
    }

    void appendTab()
    {
        endLine();
        put("\t");
        m_lineStart = true;
    }

    void appendLineBreak()
    {
        endLine();
        put("\r\n");
        m_lineStart = true;
    }

    /// Text under white-space: normal: runs of white space become one blank,
    /// none at the start or end of a line.
    void addText(std::string_view text)
    {
        std::size_t i = 0;
        const std::size_t n = text.size();
        while (i < n) {
            if (isSpaceByte(text[i])) {
                if (!m_lineStart)
                    m_pendingSpace = true;
                ++i;
                continue;
            }
            std::size_t end = i;
            while (end < n && !isSpaceByte(text[end]))
                ++end;
            if (m_pendingSpace)
                put(" ");
            m_pendingSpace = false;
            put(text.substr(i, end - i));
            m_lineStart = false;
            i = end;
        }
    }

    /// Text under white-space: pre: kept as it is, line ends as CR LF.
    void addPreformatted(std::string_view text)
    {
        if (text.empty())
            return;
        if (m_pendingSpace)
            put(" ");
        m_pendingSpace = false;
        std::size_t start = 0;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] != '\n' && text[i] != '\r')
                continue;
            if (i > start)
                put(text.substr(start, i - start));
            put("\r\n");
            if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
                ++i;
            start = i + 1;
        }
        if (start < text.size())
            put(text.substr(start));
        const char last = text.back();
        m_lineStart = last == '\n' || last == '\r';
    }

    std::string take() { return std::move(m_out); }

private:
    void put(std::string_view s)
    {
        if (m_pendingBreaks > 0 && m_started) {
            for (int i = 0; i < m_pendingBreaks; ++i)
                m_out += "\r\n";
        }
        m_pendingBreaks = 0;
        m_out += s;
        m_started = true;
    }

    std::string m_out;
    int m_pendingBreaks = 0;
    bool m_started = false;
    bool m_lineStart = true;
    bool m_pendingSpace = false;
};

struct Frame
{
    const GumboNode *node = nullptr;
    unsigned next = 0;
    Display display = Display::Inline;
    int breaks = 0;                    ///< required line breaks around the box
    int table = -1;                    ///< index of the nearest table frame
    const GumboNode *lastRow = nullptr; ///< table frames: their last row box
    const GumboNode *lastCell = nullptr;
    bool lastCellKnown = false;
    const GumboNode *lastLooseRow = nullptr;
    bool lastLooseRowKnown = false;
    bool preformatted = false;
    bool optionsOnly = false; ///< a select shows only its options
    bool detailsClosed = false;
    bool summarySeen = false;
};

bool isPreformattedTag(const GumboElement &element)
{
    return element.tag_namespace == GUMBO_NAMESPACE_HTML
        && (element.tag == GUMBO_TAG_PRE || element.tag == GUMBO_TAG_LISTING || element.tag == GUMBO_TAG_XMP
            || element.tag == GUMBO_TAG_PLAINTEXT);
}

bool isOptionTag(const GumboNode *node)
{
    return node->type == GUMBO_NODE_ELEMENT && node->v.element.tag_namespace == GUMBO_NAMESPACE_HTML
        && (node->v.element.tag == GUMBO_TAG_OPTION || node->v.element.tag == GUMBO_TAG_OPTGROUP);
}

/// Walks the tree without recursion: gumbo builds trees as deep as the page
/// nests its tags, and a hostile page may nest them a million deep.
std::string renderedText(const GumboNode *body, const DecodeLimits &limits, PageTextError &error)
{
    TextCollector out;
    unsigned steps = 0;
    std::vector<Frame> stack;
    stack.reserve(64);

    auto push = [&](const GumboNode *node, Display display) {
        Frame frame;
        frame.node = node;
        frame.display = display;
        const GumboElement &element = node->v.element;
        const bool html = element.tag_namespace == GUMBO_NAMESPACE_HTML;
        if (html && element.tag == GUMBO_TAG_P)
            frame.breaks = 2;
        else if (isBlockLevel(display))
            frame.breaks = 1;
        if (!stack.empty()) {
            const Frame &parent = stack.back();
            frame.table = parent.table;
            frame.preformatted = parent.preformatted;
            frame.optionsOnly = parent.optionsOnly && !(html && element.tag == GUMBO_TAG_OPTION);
        }
        if (isPreformattedTag(element))
            frame.preformatted = true;
        if (html && element.tag == GUMBO_TAG_SELECT)
            frame.optionsOnly = true;
        if (html && element.tag == GUMBO_TAG_DETAILS)
            frame.detailsClosed = !hasAttribute(element, "open");
        if (display == Display::Table) {
            frame.table = int(stack.size());
            frame.lastRow = lastRowOf(node);
        }
        if (frame.breaks)
            out.requireBreaks(frame.breaks);
        if (display == Display::Cell)
            out.endLine();
        stack.push_back(frame);
    };

    auto pop = [&] {
        const Frame frame = stack.back();
        stack.pop_back();
        if (frame.display == Display::Cell) {
            out.endLine();
            if (!stack.empty()) {
                Frame &parent = stack.back();
                if (!parent.lastCellKnown) {
                    parent.lastCell = lastChildOf(parent.node, Display::Cell);
                    parent.lastCellKnown = true;
                }
                if (frame.node != parent.lastCell)
                    out.appendTab();
            }
        } else if (frame.display == Display::Row && !stack.empty()) {
            // A row's table is the nearest table when the row sits in it or
            // in one of its row groups; a row elsewhere is compared with its
            // siblings.
            Frame &parent = stack.back();
            const GumboNode *last = nullptr;
            const bool inTable = frame.table >= 0
                && (parent.node == stack[std::size_t(frame.table)].node
                    || (parent.display == Display::RowGroup && stack.size() >= 2
                        && stack[stack.size() - 2].node == stack[std::size_t(frame.table)].node));
            if (inTable) {
                last = stack[std::size_t(frame.table)].lastRow;
            } else {
                if (!parent.lastLooseRowKnown) {
                    parent.lastLooseRow = lastChildOf(parent.node, Display::Row);
                    parent.lastLooseRowKnown = true;
                }
                last = parent.lastLooseRow;
            }
            if (frame.node != last)
                out.appendLineBreak();
        }
        if (frame.breaks)
            out.requireBreaks(frame.breaks);
    };

    push(body, Display::Block);
    while (!stack.empty()) {
        if ((++steps & 4095) == 0) {
            error = limitReached(limits);
            if (error != PageTextError::None)
                return {};
        }
        Frame &frame = stack.back();
        const GumboVector &children = childrenOf(frame.node);
        if (frame.next >= children.length) {
            pop();
            continue;
        }
        const auto *child = static_cast<const GumboNode *>(children.data[frame.next++]);
        switch (child->type) {
        case GUMBO_NODE_TEXT:
        case GUMBO_NODE_WHITESPACE:
        case GUMBO_NODE_CDATA:
            if (frame.optionsOnly || frame.detailsClosed)
                break;
            if (frame.preformatted)
                out.addPreformatted(child->v.text.text);
            else
                out.addText(child->v.text.text);
            break;
        case GUMBO_NODE_ELEMENT:
        case GUMBO_NODE_TEMPLATE: {
            if (frame.optionsOnly && !isOptionTag(child))
                break;
            if (frame.detailsClosed) {
                // A closed details element shows its first summary only.
                const bool summary = child->type == GUMBO_NODE_ELEMENT
                    && child->v.element.tag == GUMBO_TAG_SUMMARY && !frame.summarySeen;
                if (!summary)
                    break;
                frame.summarySeen = true;
            }
            const Display display = displayOf(child);
            if (display == Display::None)
                break;
            if (child->type == GUMBO_NODE_ELEMENT && child->v.element.tag == GUMBO_TAG_BR
                && child->v.element.tag_namespace == GUMBO_NAMESPACE_HTML) {
                out.appendLineBreak();
                break;
            }
            push(child, display); // may reallocate the stack: `frame` is not used again
            break;
        }
        default:
            break;
        }
    }
    return out.take();
}

/// Reads the NULs inside tags as the tokenizer does, as U+FFFD, before the
/// parser sees them. Gumbo 0.10 gets them wrong in either of its error
/// modes: a NUL in an attribute's name runs into the next name or takes the
/// name's place ('<b \0hidden>' would hide). NULs elsewhere it reads right
/// and they stay. The scan follows tags and quotes only as far as finding
/// those NULs; callbook pages carry none at all.
void settleNulsInTags(QByteArray &utf8)
{
    static constexpr char kReplacement[] = "\xEF\xBF\xBD";
    // The tokenizer's tag states, as far as they tell where a tag ends: a
    // quote opens a value only after "=", elsewhere it is part of a name.
    enum class In { Text, TagName, BeforeName, Name, AfterName, BeforeValue, Quoted, Unquoted };
    QByteArray out;
    out.reserve(utf8.size() + 64);
    const auto isAlpha = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    const auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r'; };
    const qsizetype n = utf8.size();
    In state = In::Text;
    char quote = 0;
    for (qsizetype i = 0; i < n; ++i) {
        const char c = utf8[i];
        if (state == In::Text) {
            out.append(c);
            const char next = i + 1 < n ? utf8[i + 1] : '\0';
            const char after = i + 2 < n ? utf8[i + 2] : '\0';
            if (c == '<' && (isAlpha(next) || (next == '/' && isAlpha(after)))) {
                state = In::TagName;
                out.append(utf8[++i]); // the first letter, or the slash of an end tag
            }
            continue;
        }
        out.append(c == '\0' ? QByteArrayView(kReplacement, 3) : QByteArrayView(&c, 1));
        const bool ends = c == '>' && state != In::Quoted;
        if (ends) {
            state = In::Text;
            continue;
        }
        switch (state) {
        case In::TagName:
        case In::Unquoted:
            if (isSpace(c) || (c == '/' && state == In::TagName))
                state = In::BeforeName;
            break;
        case In::BeforeName:
            if (!isSpace(c) && c != '/')
                state = In::Name;
            break;
        case In::Name:
        case In::AfterName:
            if (c == '=')
                state = In::BeforeValue;
            else if (c == '/')
                state = In::BeforeName;
            else if (isSpace(c))
                state = In::AfterName;
            else
                state = In::Name;
            break;
        case In::BeforeValue:
            if (c == '"' || c == '\'') {
                quote = c;
                state = In::Quoted;
            } else if (!isSpace(c)) {
                state = In::Unquoted;
            }
            break;
        case In::Quoted:
            if (c == quote)
                state = In::BeforeName;
            break;
        case In::Text:
            break;
        }
    }
    utf8 = std::move(out);
}

const GumboNode *findBody(const GumboNode *root)
{
    if (!root || !isElement(root))
        return nullptr;
    const GumboVector &children = childrenOf(root);
    for (unsigned i = 0; i < children.length; ++i) {
        const auto *child = static_cast<const GumboNode *>(children.data[i]);
        if (child->type == GUMBO_NODE_ELEMENT && child->v.element.tag == GUMBO_TAG_BODY)
            return child;
    }
    return nullptr;
}

} // namespace

QByteArray pageCharset(QByteArrayView bytes, QByteArrayView contentType)
{
    if (bytes.startsWith("\xEF\xBB\xBF"))
        return QByteArrayLiteral("utf-8");
    if (bytes.startsWith("\xFF\xFE"))
        return QByteArrayLiteral("utf-16le");
    if (bytes.startsWith("\xFE\xFF"))
        return QByteArrayLiteral("utf-16be");
    const QByteArray fromHeader = charsetParameter(contentType);
    if (!fromHeader.isEmpty())
        return settleLabel(lowerTrimmed(fromHeader), false);
    return settleLabel(lowerTrimmed(metaCharset(bytes)), true);
}

QString decodePage(QByteArrayView bytes, QByteArrayView contentType)
{
    const QByteArray charset = pageCharset(bytes, contentType);
    if (charset == "windows-1252")
        return app::fromWindows1252(bytes);
    QStringDecoder decoder(charset.constData(), QStringDecoder::Flag::Stateless);
    if (!decoder.isValid())
        return app::fromWindows1252(bytes);
    // The decoder drops a byte-order mark of its own encoding.
    return decoder.decode(bytes);
}

DecodedPage htmlDecode(QStringView html, const DecodeLimits &limits)
{
    DecodedPage result;
    if (html.isEmpty())
        return result;
    QByteArray utf8 = html.toUtf8();
    if (utf8.contains('\0'))
        settleNulsInTags(utf8);
    if (limits.guardMarkup) {
        std::string guarded;
        const MarkupGuardResult guard = guardMarkup(std::string_view(utf8.constData(), std::size_t(utf8.size())), guarded,
                                                    [&] { return limitReached(limits) != PageTextError::None; });
        if (guard.changed && !guard.stopped)
            utf8 = QByteArray(guarded.data(), qsizetype(guarded.size()));
        result.tagsLeftOut = guard.tagsLeftOut;
    }
    result.error = limitReached(limits);
    if (result.error != PageTextError::None)
        return result;
    Arena arena(kArenaFloor + kArenaPerByte * std::size_t(utf8.size()), limits);
    GumboOptions options = kGumboDefaultOptions;
    options.allocator = &Arena::gumboAllocate;
    options.deallocator = &Arena::gumboFree;
    options.userdata = &arena;
    // We never look at the parse errors, but gumbo 0.10 told to keep none
    // runs the name of an attribute after a duplicate into the next one's
    // ("class=a class=b style" gives "classstyle"); the guard leaves no
    // duplicates, and an unguarded parse keeps the errors to read them right.
    options.max_errors = limits.guardMarkup ? 0 : -1;
    const GumboOutput *output = arena.parse(options, utf8.constData(), std::size_t(utf8.size()));
    if (!output) {
        result.error = arena.error();
        qCDebug(lcLookup) << "page of" << utf8.size() << "bytes not read:" << int(result.error);
        return result;
    }
    const GumboNode *body = findBody(output->root);
    if (!body)
        return result;
    const std::string text = renderedText(body, limits, result.error);
    // The arena releases the whole tree; gumbo_destroy_output is not called.
    if (result.error == PageTextError::None)
        result.text = QString::fromUtf8(text.data(), qsizetype(text.size()));
    return result;
}

QString htmlDecode(QStringView html)
{
    return htmlDecode(html, DecodeLimits()).text;
}

DecodedPage decodePageText(QByteArrayView bytes, QByteArrayView contentType, const DecodeLimits &limits)
{
    return htmlDecode(decodePage(bytes, contentType), limits);
}

} // namespace marvik::lookup
