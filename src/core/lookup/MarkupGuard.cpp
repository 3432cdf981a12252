// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/MarkupGuard.h"

#include <gumbo.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace marvik::lookup {

namespace {

// While the outline is at least this deep, end tags that close nothing are
// left out; below it the parser's walk for them is short.
constexpr int kStrayDepth = kMaxMarkupDepth / 4;

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r';
}

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c | 0x20) : c;
}

bool sameName(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lower(x) == lower(y); });
}

constexpr std::uint64_t nameHash(std::string_view name)
{
    std::uint64_t h = 14695981039346656037ull;
    for (char c : name)
        h = (h ^ std::uint8_t(lower(c))) * 1099511628211ull;
    return h;
}

std::uint64_t valueHash(std::string_view value)
{
    std::uint64_t h = 14695981039346656037ull;
    for (char c : value)
        h = (h ^ std::uint8_t(c)) * 1099511628211ull;
    return h;
}

constexpr std::uint64_t kP = nameHash("p");
constexpr std::uint64_t kLi = nameHash("li");
constexpr std::uint64_t kTr = nameHash("tr");
constexpr std::uint64_t kTbody = nameHash("tbody");
constexpr std::uint64_t kSelect = nameHash("select");
constexpr std::uint64_t kButton = nameHash("button");
constexpr std::uint64_t kForm = nameHash("form");
constexpr std::uint64_t kCaption = nameHash("caption");

// ---------------------------------------------------------------------------
// What the parser does with each tag name

enum class Id : std::uint8_t {
    Other, A, Br, Button, Caption, Font, Form, Input, Isindex, Keygen, Li, Math, Nobr, Optgroup, Option, P,
    Plaintext, Script, Select, Svg, Table, Template, Textarea, Tr
};

enum Flag : std::uint32_t {
    Void = 1u << 0,       ///< never has content
    RawText = 1u << 1,    ///< content is text up to its own end tag
    NoPush = 1u << 2,     ///< never on the stack of its own (html, head, body ...)
    Special = 1u << 3,    ///< stops the parser's walk for a stray end tag
    Scope = 1u << 4,      ///< bounds "in scope"
    ListScope = 1u << 5,  ///< bounds list-item scope besides Scope
    TableScope = 1u << 6, ///< bounds table scope
    NotLiStop = 1u << 7,  ///< special, yet passed over when a new list item looks for the open one
    ClosesP = 1u << 8,    ///< its start tag closes an open p
    Heading = 1u << 9,
    DdDt = 1u << 10,
    Cell = 1u << 11,
    Section = 1u << 12,   ///< tbody, thead, tfoot
    TableTag = 1u << 13,
    Formatting = 1u << 14,
    Breakout = 1u << 15,  ///< leaves svg or math content
    Ruby = 1u << 16,      ///< rb, rp, rt, rtc
    Integration = 1u << 17, ///< inside svg or math, a place where markup is HTML again
    Marker = 1u << 18,    ///< bounds the formatting elements the parser rebuilds
    NoRebuild = 1u << 19, ///< its start tag does not rebuild formatting elements first
    BlockEnd = 1u << 20,  ///< its end tag closes it when in scope, whatever is open above
};

struct TagInfo
{
    Id id = Id::Other;
    std::uint32_t flags = 0;
};

/// The HTML elements as the parser we build on (gumbo 0.10) knows them, by
/// its tag number: it predates dialog and search, which it treats as any
/// unknown element.
const std::array<TagInfo, GUMBO_TAG_LAST + 1> &htmlTags()
{
    static const std::array<TagInfo, GUMBO_TAG_LAST + 1> tags = [] {
        constexpr std::uint32_t S = Special;
        constexpr std::uint32_t CP = ClosesP | Special;
        constexpr std::uint32_t B = Breakout;
        const std::pair<const char *, TagInfo> known[] = {
            {"a", {Id::A, Formatting}},
            {"address", {Id::Other, CP | NotLiStop | NoRebuild | BlockEnd}},
            {"applet", {Id::Other, S | Scope | Marker | BlockEnd}},
            {"area", {Id::Other, S | Void}},
            {"article", {Id::Other, CP | NoRebuild | BlockEnd}},
            {"aside", {Id::Other, CP | NoRebuild | BlockEnd}},
            {"b", {Id::Other, Formatting | B}},
            {"base", {Id::Other, S | Void | NoRebuild}},
            {"basefont", {Id::Other, S | Void | NoRebuild}},
            {"bgsound", {Id::Other, S | Void | NoRebuild}},
            {"big", {Id::Other, Formatting | B}},
            {"blockquote", {Id::Other, CP | B | NoRebuild | BlockEnd}},
            {"body", {Id::Other, S | NoPush | B | NoRebuild}},
            {"br", {Id::Br, S | Void | B}},
            {"button", {Id::Button, S | BlockEnd}},
            {"caption", {Id::Caption, S | Scope | Marker | NoRebuild}},
            {"center", {Id::Other, CP | B | NoRebuild | BlockEnd}},
            {"code", {Id::Other, Formatting | B}},
            {"col", {Id::Other, S | Void | NoRebuild}},
            {"colgroup", {Id::Other, S | NoPush | NoRebuild}},
            {"dd", {Id::Other, CP | DdDt | B | NoRebuild}},
            {"details", {Id::Other, CP | NoRebuild | BlockEnd}},
            {"dir", {Id::Other, CP | NoRebuild | BlockEnd}},
            {"div", {Id::Other, CP | NotLiStop | B | NoRebuild | BlockEnd}},
            {"dl", {Id::Other, CP | B | NoRebuild | BlockEnd}},
            {"dt", {Id::Other, CP | DdDt | B | NoRebuild}},
            {"em", {Id::Other, Formatting | B}},
            {"embed", {Id::Other, S | Void | B}},
            {"fieldset", {Id::Other, CP | NoRebuild | BlockEnd}},
            {"figcaption", {Id::Other, CP | NoRebuild | BlockEnd}},
            {"figure", {Id::Other, CP | NoRebuild | BlockEnd}},
            {"font", {Id::Font, Formatting}},
            {"footer", {Id::Other, CP | NoRebuild | BlockEnd}},
            {"form", {Id::Form, CP | NoRebuild}},
            {"frame", {Id::Other, S | Void | NoRebuild}},
            {"frameset", {Id::Other, S | NoPush | NoRebuild}},
            {"h1", {Id::Other, CP | Heading | B | NoRebuild}},
            {"h2", {Id::Other, CP | Heading | B | NoRebuild}},
            {"h3", {Id::Other, CP | Heading | B | NoRebuild}},
            {"h4", {Id::Other, CP | Heading | B | NoRebuild}},
            {"h5", {Id::Other, CP | Heading | B | NoRebuild}},
            {"h6", {Id::Other, CP | Heading | B | NoRebuild}},
            {"head", {Id::Other, S | NoPush | B | NoRebuild}},
            {"header", {Id::Other, CP | NoRebuild | BlockEnd}},
            {"hgroup", {Id::Other, CP | NoRebuild | BlockEnd}},
            {"hr", {Id::Other, CP | Void | B | NoRebuild}},
            {"html", {Id::Other, S | NoPush | NoRebuild}},
            {"i", {Id::Other, Formatting | B}},
            {"iframe", {Id::Other, S | RawText | NoRebuild}},
            {"image", {Id::Other, Void}},
            {"img", {Id::Other, S | Void | B}},
            {"input", {Id::Input, S | Void}},
            {"isindex", {Id::Isindex, S | Void | NoRebuild}},
            {"keygen", {Id::Keygen, S | Void}},
            {"li", {Id::Li, CP | B | NoRebuild}},
            {"link", {Id::Other, S | Void | NoRebuild}},
            {"listing", {Id::Other, CP | B | NoRebuild | BlockEnd}},
            {"main", {Id::Other, CP | NoRebuild | BlockEnd}},
            {"marquee", {Id::Other, S | Scope | Marker | BlockEnd}},
            {"math", {Id::Math, 0}},
            {"menu", {Id::Other, CP | B | NoRebuild | BlockEnd}},
            {"meta", {Id::Other, S | Void | B | NoRebuild}},
            {"nav", {Id::Other, CP | NoRebuild | BlockEnd}},
            {"nobr", {Id::Nobr, Formatting | B}},
            {"noembed", {Id::Other, S | RawText | NoRebuild}},
            {"noframes", {Id::Other, S | RawText | NoRebuild}},
            {"noscript", {Id::Other, S}},
            {"object", {Id::Other, S | Scope | Marker | BlockEnd}},
            {"ol", {Id::Other, CP | ListScope | B | NoRebuild | BlockEnd}},
            {"optgroup", {Id::Optgroup, 0}},
            {"option", {Id::Option, 0}},
            {"p", {Id::P, CP | NotLiStop | B | NoRebuild}},
            {"param", {Id::Other, S | Void | NoRebuild}},
            {"plaintext", {Id::Plaintext, CP | NoRebuild}},
            {"pre", {Id::Other, CP | B | NoRebuild | BlockEnd}},
            {"rb", {Id::Other, Ruby | NoRebuild}},
            {"rp", {Id::Other, Ruby | NoRebuild}},
            {"rt", {Id::Other, Ruby | NoRebuild}},
            {"rtc", {Id::Other, Ruby | NoRebuild}},
            {"ruby", {Id::Other, B}},
            {"s", {Id::Other, Formatting | B}},
            {"script", {Id::Script, S | RawText | NoRebuild}},
            {"section", {Id::Other, CP | NoRebuild | BlockEnd}},
            {"select", {Id::Select, S}},
            {"small", {Id::Other, Formatting | B}},
            {"source", {Id::Other, S | Void | NoRebuild}},
            {"span", {Id::Other, B}},
            {"strike", {Id::Other, Formatting | B}},
            {"strong", {Id::Other, Formatting | B}},
            {"style", {Id::Other, S | RawText | NoRebuild}},
            {"sub", {Id::Other, B}},
            {"summary", {Id::Other, CP | NoRebuild | BlockEnd}},
            {"sup", {Id::Other, B}},
            {"svg", {Id::Svg, 0}},
            {"table", {Id::Table, CP | Scope | TableScope | TableTag | B | NoRebuild}},
            {"tbody", {Id::Other, S | Section | NoRebuild}},
            {"td", {Id::Other, S | Scope | Cell | Marker | NoRebuild}},
            {"template", {Id::Template, S | Scope | TableScope | Marker | NoRebuild}},
            {"textarea", {Id::Textarea, S | RawText | NoRebuild}},
            {"tfoot", {Id::Other, S | Section | NoRebuild}},
            {"th", {Id::Other, S | Scope | Cell | Marker | NoRebuild}},
            {"thead", {Id::Other, S | Section | NoRebuild}},
            {"title", {Id::Other, S | RawText | NoRebuild}},
            {"tr", {Id::Tr, S | NoRebuild}},
            {"track", {Id::Other, S | Void | NoRebuild}},
            {"tt", {Id::Other, Formatting | B}},
            {"u", {Id::Other, Formatting | B}},
            {"ul", {Id::Other, CP | ListScope | B | NoRebuild | BlockEnd}},
            {"var", {Id::Other, B}},
            {"wbr", {Id::Other, S | Void}},
            {"xmp", {Id::Other, CP | RawText}},
        };
        std::array<TagInfo, GUMBO_TAG_LAST + 1> byTag{};
        for (const auto &[name, info] : known)
            byTag[gumbo_tag_enum(name)] = info;
        byTag[GUMBO_TAG_UNKNOWN] = {};
        return byTag;
    }();
    return tags;
}

enum class Namespace : std::uint8_t { Html, Svg, Math };

/// What an svg or math element is to the parser: the ones where markup is
/// HTML again bound scopes as applet and object do, and so does
/// annotation-xml, which holds HTML only when its encoding says so.
TagInfo foreignTag(std::string_view name, Namespace ns, bool htmlEncoding)
{
    constexpr std::uint32_t boundary = Special | Scope;
    if (ns == Namespace::Svg) {
        const bool html = sameName(name, "foreignobject") || sameName(name, "desc") || sameName(name, "title");
        return {Id::Other, html ? boundary | Integration : 0u};
    }
    if (sameName(name, "annotation-xml"))
        return {Id::Other, boundary | (htmlEncoding ? std::uint32_t(Integration) : 0u)};
    for (std::string_view n : {"mi", "mo", "mn", "ms", "mtext"}) {
        if (sameName(name, n))
            return {Id::Other, boundary | Integration};
    }
    return {};
}

GumboTag gumboTag(std::string_view name)
{
    // No tag name is longer; gumbo hashes whatever length it is given.
    return name.size() > 16 ? GUMBO_TAG_UNKNOWN : gumbo_tagn_enum(name.data(), unsigned(name.size()));
}

TagInfo htmlTag(std::string_view name)
{
    return htmlTags()[gumboTag(name)];
}

/// The attributes the rendered text or the parser's own decisions depend
/// on: display and visibility (style, hidden, open), a hidden input in a
/// table (type), the prompt text of isindex, font attributes that end svg
/// content, and annotation-xml's encoding.
int keptAttribute(std::string_view name)
{
    static constexpr std::string_view kept[] = {"style", "hidden", "open", "type", "prompt",
                                                "color", "face", "size", "encoding"};
    for (int i = 0; i < int(std::size(kept)); ++i) {
        if (sameName(name, kept[i]))
            return i;
    }
    return -1;
}

constexpr int kEncoding = 8;

bool isFontBreakoutAttribute(int kept)
{
    return kept >= 5 && kept <= 7; // color, face, size
}

// ---------------------------------------------------------------------------
// The outline of the parser's stack of open elements

enum Category { CatSpecial, CatScope, CatButton, CatList, CatTableScope, CatLiStop, CatHeading, CatDdDt, CatCell,
                CatSection, CatTable, CatHtml, CatHtmlElement, CatCount };

struct Entry
{
    std::string_view name;
    std::uint64_t hash = 0;
    TagInfo info;
    Namespace ns = Namespace::Html;
    bool foreign() const { return ns != Namespace::Html; }
    std::int32_t below = -1; ///< the next lower entry in the same hash bucket
    std::int32_t listed = -1; ///< its place in the list of formatting elements and markers
    std::array<std::int32_t, CatCount> top{}; ///< topmost entry of each category at or below this one
};

/// The parser's list of formatting elements it rebuilds where text goes on
/// after their block closed, with the markers cells and the like set.
struct Listed
{
    std::string_view name;
    std::uint64_t hash = 0;
    std::uint64_t attributes = 0; ///< the kept attributes, order aside
    TagInfo info;
    std::int32_t at = -1; ///< its entry on the stack, or -1 when closed by a block
    bool marker = false;
};

constexpr int kMaxIsindexes = 256;

/// Attributes a formatting tag keeps: the parser compares each with each.
constexpr int kFormattingAttributes = 16;

// More formatting elements than this since the last marker is no page's
// markup; the outline forgets the oldest (the parser's memory budget deals
// with such a page).
constexpr std::size_t kMaxListed = 64;

class Outline
{
public:
    Outline() { m_buckets.fill(-1); }

    int depth() const { return int(m_stack.size()); }
    const Entry *current() const { return m_stack.empty() ? nullptr : &m_stack.back(); }
    Id currentId() const { return m_stack.empty() ? Id::Other : m_stack.back().info.id; }
    int top(Category c) const { return m_stack.empty() ? -1 : m_stack.back().top[c]; }

    /// The current node is an svg or math element where tags stay foreign.
    bool inForeignContent() const
    {
        return !m_stack.empty() && m_stack.back().foreign() && !(m_stack.back().info.flags & Integration);
    }

    /// The topmost open element of this name, or -1.
    int topmost(std::string_view name, std::uint64_t hash) const
    {
        for (int at = m_buckets[hash % kBuckets]; at >= 0; at = m_stack[std::size_t(at)].below) {
            const Entry &e = m_stack[std::size_t(at)];
            if (e.hash == hash && sameName(e.name, name))
                return at;
        }
        return -1;
    }

    /// False when the outline is full: the caller leaves the tag out.
    bool push(std::string_view name, std::uint64_t hash, TagInfo info, Namespace ns)
    {
        if (depth() >= kMaxMarkupDepth)
            return false;
        Entry e;
        e.name = name;
        e.hash = hash;
        e.info = info;
        e.ns = ns;
        const bool foreign = ns != Namespace::Html;
        if (m_stack.empty())
            e.top.fill(-1);
        else
            e.top = m_stack.back().top;
        const std::int32_t at = std::int32_t(m_stack.size());
        const std::uint32_t f = info.flags;
        const bool boundary = f & Scope;
        auto mark = [&](Category c, bool member) {
            if (member)
                e.top[c] = at;
        };
        mark(CatSpecial, f & Special);
        mark(CatScope, boundary);
        mark(CatButton, boundary || (!foreign && info.id == Id::Button));
        mark(CatList, boundary || (!foreign && (f & ListScope)));
        mark(CatTableScope, !foreign && (f & TableScope));
        mark(CatLiStop, (f & Special) && !(f & NotLiStop));
        mark(CatHeading, !foreign && (f & Heading));
        mark(CatDdDt, !foreign && (f & DdDt));
        mark(CatCell, !foreign && (f & Cell));
        mark(CatSection, !foreign && (f & Section));
        mark(CatTable, !foreign && (f & TableTag));
        mark(CatHtml, !foreign || (f & Integration));
        mark(CatHtmlElement, !foreign);
        std::int32_t &bucket = m_buckets[hash % kBuckets];
        e.below = bucket;
        bucket = at;
        m_stack.push_back(e);
        if (!foreign && (f & Marker)) {
            m_stack.back().listed = std::int32_t(m_list.size());
            m_list.push_back({name, hash, 0, info, at, true});
        }
        return true;
    }

    /// Pops the entry at `at` and everything above it.
    void popTo(int at)
    {
        while (int(m_stack.size()) > std::max(at, 0)) {
            const Entry &e = m_stack.back();
            const int pos = int(m_stack.size()) - 1;
            if (e.listed >= 0 && m_list[std::size_t(e.listed)].at == pos) {
                if (m_list[std::size_t(e.listed)].marker)
                    m_list.resize(std::size_t(e.listed));
                else
                    m_list[std::size_t(e.listed)].at = -1;
            }
            m_buckets[e.hash % kBuckets] = e.below;
            m_stack.pop_back();
        }
    }

    /// Pushes a formatting element and lists it; of three listed alike
    /// since the last marker, the oldest leaves the list.
    bool pushFormatting(std::string_view name, std::uint64_t hash, TagInfo info, std::uint64_t attributes)
    {
        if (!push(name, hash, info, Namespace::Html))
            return false;
        const std::size_t start = std::size_t(lastMarker() + 1);
        int alike = 0;
        std::size_t oldest = m_list.size();
        for (std::size_t i = m_list.size(); i-- > start;) {
            if (m_list[i].hash == hash && m_list[i].attributes == attributes && sameName(m_list[i].name, name)) {
                ++alike;
                oldest = i;
            }
        }
        if (alike >= 3)
            unlist(int(oldest));
        if (m_list.size() - start >= kMaxListed)
            unlist(int(start));
        m_stack.back().listed = std::int32_t(m_list.size());
        m_list.push_back({name, hash, attributes, info, depth() - 1, false});
        return true;
    }

    /// The last listed element of this name since the last marker, or -1.
    int listed(std::string_view name, std::uint64_t hash) const
    {
        for (std::size_t i = m_list.size(); i-- > 0;) {
            if (m_list[i].marker)
                return -1;
            if (m_list[i].hash == hash && sameName(m_list[i].name, name))
                return int(i);
        }
        return -1;
    }

    const Listed &listedEntry(int i) const { return m_list[std::size_t(i)]; }
    void unlist(int i)
    {
        for (std::size_t j = std::size_t(i); j < m_list.size(); ++j) {
            const std::int32_t at = m_list[j].at;
            if (at >= 0)
                m_stack[std::size_t(at)].listed = j == std::size_t(i) ? -1 : std::int32_t(j - 1);
        }
        m_list.erase(m_list.begin() + i);
    }

    /// Rebuilds the formatting elements closed by a block since the last
    /// marker, as the parser does before text and most start tags.
    /// Where the elements to rebuild begin in the list: they run to its end.
    std::size_t rebuildFrom() const
    {
        if (m_list.empty() || m_list.back().marker || m_list.back().at >= 0)
            return m_list.size();
        std::size_t first = m_list.size() - 1;
        while (first > 0 && !m_list[first - 1].marker && m_list[first - 1].at < 0)
            --first;
        return first;
    }

    std::size_t listSize() const { return m_list.size(); }

    void rebuild()
    {
        for (std::size_t i = rebuildFrom(); i < m_list.size(); ++i) {
            if (!push(m_list[i].name, m_list[i].hash, m_list[i].info, Namespace::Html))
                break;
            m_list[i].at = depth() - 1;
            m_stack.back().listed = std::int32_t(i);
        }
    }

    const Entry &entry(int at) const { return m_stack[std::size_t(at)]; }

    /// A formatting element at `at` closed across blocks up to `last`: it
    /// goes, and so do the entries up to `last` that are neither blocks nor
    /// formatting elements; above `last` everything goes when `closed`,
    /// else the element stays right above `last`.
    void rebuildAbove(int at, int last, bool closed)
    {
        const Entry moved = m_stack[std::size_t(at)];
        m_moved.assign(m_stack.begin() + at + 1, m_stack.end());
        popTo(at);
        for (int i = at + 1; i < at + 1 + int(m_moved.size()); ++i) {
            const Entry &e = m_moved[std::size_t(i - at - 1)];
            if (i > last && closed)
                break;
            if (i <= last && e.top[CatSpecial] != i && !(e.info.flags & Formatting))
                continue;
            push(e.name, e.hash, e.info, e.ns);
            relist(e.listed);
            if (i == last && !closed) {
                push(moved.name, moved.hash, moved.info, moved.ns);
                relist(moved.listed);
            }
        }
        if (closed && moved.listed >= 0)
            unlist(moved.listed);
    }

private:
    static constexpr std::size_t kBuckets = 4096;

    int lastMarker() const
    {
        for (std::size_t i = m_list.size(); i-- > 0;) {
            if (m_list[i].marker)
                return int(i);
        }
        return -1;
    }

    /// A listed element back on the stack, as the entry just pushed.
    void relist(int listed)
    {
        if (listed < 0 || std::size_t(listed) >= m_list.size())
            return;
        m_list[std::size_t(listed)].at = depth() - 1;
        m_stack.back().listed = listed;
    }

    std::vector<Entry> m_stack;
    std::vector<Entry> m_moved;
    std::vector<Listed> m_list;
    std::array<std::int32_t, kBuckets> m_buckets;
};

// ---------------------------------------------------------------------------
// The pass over the page

/// gumbo 0.10 knows an end tag by its tag number only, so to it every HTML
/// element name it does not know is the same name: </foo> closes <bar>.
constexpr std::string_view kUnknownName = "\x01";
constexpr std::uint64_t kUnknownHash = nameHash(kUnknownName);
/// svg and math elements are kept apart from HTML ones of the same name.
constexpr std::uint64_t kForeignSalt = 0x9e3779b97f4a7c15ull;

struct Tag
{
    std::size_t end = std::string_view::npos; ///< after its '>'; npos: the page ends inside the tag
    std::string_view name;
    std::uint64_t hash = 0;
    std::string_view htmlName; ///< the name as HTML elements are matched
    std::uint64_t htmlHash = 0;
    TagInfo info; ///< as an HTML element
    std::uint64_t attributes = 0; ///< the kept attributes and their values, order aside
    bool selfClosing = false;
    bool fontBreakout = false;
    bool htmlEncoding = false; ///< encoding="text/html" or "application/xhtml+xml"
};

class Guard
{
public:
    Guard(std::string_view page, std::string &out, const std::function<bool()> &shouldStop)
        : m_page(page)
        , m_out(out)
        , m_shouldStop(shouldStop)
        , m_rebuildBudget(std::max<std::size_t>(4096, page.size() / 32))
    {
    }

    MarkupGuardResult run();

private:
    enum class After { Next, RawText, Stop };

    Tag scanTag(std::size_t i, bool endTag);
    After startTag(const Tag &tag, std::size_t lt);
    void endTag(const Tag &tag, std::size_t lt);
    bool openElement(const Tag &tag, TagInfo info, Namespace ns, std::size_t lt);
    void closeP();
    void closeFormatting(int at);
    /// An end tag for the listed formatting element `listed`.
    void endFormatting(int listed);
    bool inSelect() const;
    void textBefore(std::size_t from, std::size_t to);
    /// Rebuilds the formatting elements closed by a block, before what is at `at`.
    void rebuild(std::size_t at);
    std::size_t skipRawText(const Tag &tag);
    std::size_t scriptEnd(std::size_t from) const;
    /// The page holds a tag name `name` at `at`, ended as the tokenizer ends names.
    bool tagNamedAt(std::size_t at, std::string_view name) const;
    std::size_t commentEnd(std::size_t from) const;
    /// The tag scanned holds an attribute named `name` before `at`.
    bool repeatsName(std::size_t at, std::string_view name);

    // Output: the page with ranges left out, copied only once something is.
    void leaveOut(std::size_t from, std::size_t to, std::string_view instead = {});
    /// Keeps the tag scanned last, less the attributes it need not carry.
    void keepTag();
    void leaveOutTag(std::size_t lt, std::size_t end);
    bool textGathersInTable() const;
    bool inTableMode() const;
    void cdataAsText(std::size_t lt, std::size_t contentEnd, std::size_t end);

    std::string_view m_page;
    std::string &m_out;
    const std::function<bool()> &m_shouldStop;
    std::size_t m_copied = 0;
    MarkupGuardResult m_result;
    Outline m_outline;
    std::vector<std::pair<std::size_t, std::size_t>> m_cuts; ///< attributes of the last tag scanned to leave out
    std::vector<std::pair<std::size_t, std::string_view>> m_names; ///< attribute names of a formatting tag so far
    std::unordered_map<std::uint64_t, std::uint32_t> m_leftOut; ///< start tags left out per name, awaiting their end tags
    std::vector<int> m_blocks; ///< blocks above a formatting element being closed
    /// The token before was a pre or listing start tag, which drops a line
    /// break right after it, or the current node is a table part, where
    /// white space after a tag goes elsewhere than text: leaving out an end
    /// tag here would change where text goes.
    bool m_keepNextEndTag = false;
    // How many formatting elements the parser may rebuild for a page: one
    // per 32 bytes, some thousands at least; an ordinary page rebuilds a
    // few per paragraph.
    std::size_t m_rebuilt = 0;
    int m_isindexes = 0;
    std::size_t m_rebuildBudget = 0;
};

void Guard::leaveOut(std::size_t from, std::size_t to, std::string_view instead)
{
    if (!m_result.changed) {
        m_out.clear();
        m_out.reserve(m_page.size());
        m_result.changed = true;
    }
    m_out.append(m_page.substr(m_copied, from - m_copied));
    m_out.append(instead);
    m_copied = to;
}

void Guard::leaveOutTag(std::size_t lt, std::size_t end)
{
    // The last three characters of the output before the tag: the copy so
    // far, then the page since.
    const std::size_t from = m_result.changed ? m_copied : 0;
    std::string last = m_result.changed ? m_out.substr(m_out.size() - std::min<std::size_t>(m_out.size(), 3)) : std::string();
    const std::size_t since = lt - from;
    last.append(m_page.substr(lt - std::min<std::size_t>(since, 3), std::min<std::size_t>(since, 3)));
    // A "<" of the text just before must not run into what follows and
    // make a tag of it, and the parser misreads the first tag after an
    // empty "</>"; an empty comment parts them and renders nothing. While
    // a table is open the tag may also end a run of text the parser gathers
    // there (even once the current node is a formatting element rebuilt
    // beside the table); the comment ends it as well.
    const bool part = last.ends_with('<') || last.ends_with("</>") || m_outline.top(CatTable) >= 0;
    leaveOut(lt, end, part ? std::string_view("<!---->") : std::string_view());
}

void Guard::keepTag()
{
    for (const auto &[from, to] : m_cuts) {
        // "<a/x>" must not turn into the self-closing "<a/>".
        leaveOut(from, to, m_page[from - 1] == '/' ? std::string_view(" ") : std::string_view());
    }
}

Tag Guard::scanTag(std::size_t i, bool endTag)
{
    // The tokenizer's tag states: a name, then attributes with optional
    // quoted or bare values; "/>" marks the tag self-closing. A page that
    // ends inside a tag loses the tag.
    Tag tag;
    const std::string_view p = m_page;
    const std::size_t n = p.size();
    const std::size_t nameStart = i;
    while (i < n && !isSpace(p[i]) && p[i] != '/' && p[i] != '>')
        ++i;
    tag.name = p.substr(nameStart, i - nameStart);
    tag.hash = nameHash(tag.name);
    tag.info = htmlTags()[gumboTag(tag.name)];
    const bool known = gumboTag(tag.name) != GUMBO_TAG_UNKNOWN;
    tag.htmlName = known ? tag.name : kUnknownName;
    tag.htmlHash = known ? tag.hash : kUnknownHash;
    m_cuts.clear();
    m_names.clear();
    unsigned seen = 0;
    // The parser tells formatting elements apart by all their attributes
    // (three alike at most are rebuilt), so those keep theirs, up to a
    // number no real tag reaches.
    const bool formatting = !endTag && (tag.info.flags & Formatting);
    int attributeCount = 0;
    for (;;) {
        while (i < n && isSpace(p[i]))
            ++i;
        if (i >= n)
            return tag;
        if (p[i] == '>') {
            tag.end = i + 1;
            return tag;
        }
        if (p[i] == '/') {
            ++i;
            if (i < n && p[i] == '>') {
                tag.selfClosing = true;
                tag.end = i + 1;
                return tag;
            }
            continue;
        }
        const std::size_t attrStart = i++;
        while (i < n && !isSpace(p[i]) && p[i] != '/' && p[i] != '>' && p[i] != '=')
            ++i;
        const std::string_view attrName = p.substr(attrStart, i - attrStart);
        std::size_t attrEnd = i;
        std::string_view value;
        std::size_t j = i;
        while (j < n && isSpace(p[j]))
            ++j;
        if (j < n && p[j] == '=') {
            ++j;
            while (j < n && isSpace(p[j]))
                ++j;
            if (j >= n)
                return tag;
            if (p[j] == '"' || p[j] == '\'') {
                const std::size_t close = p.find(p[j], j + 1);
                if (close == std::string_view::npos)
                    return tag;
                value = p.substr(j + 1, close - j - 1);
                attrEnd = i = close + 1;
            } else if (p[j] == '>') {
                attrEnd = i = j;
            } else {
                const std::size_t start = j;
                while (j < n && !isSpace(p[j]) && p[j] != '>')
                    ++j;
                value = p.substr(start, j - start);
                attrEnd = i = j;
            }
        }
        const int kept = endTag ? -1 : keptAttribute(attrName);
        if (kept >= 0 && isFontBreakoutAttribute(kept))
            tag.fontBreakout = true;
        if (kept == kEncoding && !(seen & (1u << kEncoding)))
            tag.htmlEncoding = sameName(value, "text/html") || sameName(value, "application/xhtml+xml");
        // An attribute stays, whatever it is, when a "=" follows it: left
        // out, a name without a value before it would take that "=" and
        // what comes after as its value ('<b a a=v =">x' would lose the x).
        std::size_t next = attrEnd;
        while (next < n && isSpace(p[next]))
            ++next;
        const bool mayCut = next >= n || p[next] != '=';
        if (formatting) {
            // A repeated name goes, as the parser drops it (the parser, told
            // to keep no errors, would run it into the next name).
            // Past the number, the attributes the text depends on still stay
            // ('<b' and sixteen names, then a style that hides it).
            const bool firstKept = kept >= 0 && !(seen & (1u << kept));
            if (kept >= 0)
                seen |= 1u << kept;
            const bool over = ++attributeCount > kFormattingAttributes && !firstKept;
            const bool repeated = !over && repeatsName(attrStart, attrName);
            if ((over || repeated) && mayCut) {
                m_cuts.emplace_back(attrStart, attrEnd);
            } else if (!repeated) {
                // A sum, as the parser compares attributes in any order.
                tag.attributes += nameHash(attrName) * 3 + valueHash(value);
            }
        } else if (kept >= 0 && !(seen & (1u << kept))) {
            seen |= 1u << kept;
        } else if (mayCut) {
            m_cuts.emplace_back(attrStart, attrEnd);
        }
    }
}

bool Guard::repeatsName(std::size_t at, std::string_view name)
{
    for (const auto &[start, attributeName] : m_names) {
        if (start < at && sameName(attributeName, name))
            return true;
    }
    m_names.emplace_back(at, name);
    return false;
}

std::size_t Guard::commentEnd(std::size_t from) const
{
    // "<!-->" and "<!--->" are whole comments; otherwise "--" then ">" or
    // "!>" ends one, with any number of dashes before.
    const std::string_view p = m_page;
    const std::size_t n = p.size();
    if (from < n && p[from] == '>')
        return from + 1;
    if (from + 1 < n && p[from] == '-' && p[from + 1] == '>')
        return from + 2;
    std::size_t at = from;
    for (;;) {
        const std::size_t dashes = p.find("--", at);
        if (dashes == std::string_view::npos)
            return n;
        std::size_t m = dashes + 2;
        while (m < n && p[m] == '-')
            ++m;
        if (m < n && p[m] == '>')
            return m + 1;
        if (m + 1 < n && p[m] == '!' && p[m + 1] == '>')
            return m + 2;
        at = m;
    }
}

bool Guard::tagNamedAt(std::size_t at, std::string_view name) const
{
    const std::size_t after = at + name.size();
    return after <= m_page.size() && sameName(m_page.substr(at, name.size()), name)
        && (after == m_page.size() || isSpace(m_page[after]) || m_page[after] == '/' || m_page[after] == '>');
}

std::size_t Guard::scriptEnd(std::size_t from) const
{
    // A script ends at its end tag, except inside "<!--" ... "-->", where a
    // "<script" starts a stretch that only its own "</script" ends.
    enum class State { Data, Escaped, DoubleEscaped } state = State::Data;
    const std::string_view p = m_page;
    int dashes = 0;
    for (std::size_t i = from; i < p.size(); ++i) {
        const char c = p[i];
        if (c == '-') {
            ++dashes;
            continue;
        }
        const bool endOfComment = c == '>' && dashes >= 2;
        dashes = 0;
        if (state == State::Data) {
            if (p.compare(i, 4, "<!--") == 0) {
                state = State::Escaped;
                i += 3;
                dashes = 2;
            } else if (c == '<' && i + 1 < p.size() && p[i + 1] == '/' && tagNamedAt(i + 2, "script")) {
                return i;
            }
        } else if (endOfComment) {
            state = State::Data;
        } else if (c == '<' && i + 1 < p.size() && p[i + 1] == '/' && tagNamedAt(i + 2, "script")) {
            if (state == State::Escaped)
                return i;
            state = State::Escaped;
        } else if (c == '<' && state == State::Escaped && tagNamedAt(i + 1, "script")) {
            state = State::DoubleEscaped;
        }
    }
    return std::string_view::npos;
}

std::size_t Guard::skipRawText(const Tag &tag)
{
    // The element's text runs to its own end tag, whatever the case.
    const std::string_view p = m_page;
    std::size_t at = tag.end;
    if (sameName(tag.name, "script")) {
        at = scriptEnd(at);
    } else {
        for (at = p.find("</", at); at != std::string_view::npos && !tagNamedAt(at + 2, tag.name); at = p.find("</", at + 2)) {
        }
    }
    if (at == std::string_view::npos)
        return p.size();
    const Tag end = scanTag(at + 2, true);
    if (end.end == std::string_view::npos)
        return p.size();
    keepTag();
    return end.end;
}

void Guard::closeP()
{
    const int p = m_outline.topmost("p", kP);
    if (p >= 0 && p > m_outline.top(CatButton))
        m_outline.popTo(p);
}

void Guard::closeFormatting(int at)
{
    // With blocks opened inside it, the parser moves the formatting element
    // into each block in turn (up to eight), keeping formatting elements on
    // the way and dropping other inline ones, then closes it after the last
    // block with everything opened there. Closing takes a ninth round, so
    // with eight blocks or more it stays open inside the eighth.
    constexpr int kMoves = 8;
    m_blocks.clear();
    for (int i = at + 1; i < m_outline.depth() && int(m_blocks.size()) <= kMoves; ++i) {
        if (m_outline.entry(i).top[CatSpecial] == i)
            m_blocks.push_back(i);
    }
    if (m_blocks.empty()) {
        const int listed = m_outline.entry(at).listed;
        m_outline.popTo(at);
        if (listed >= 0)
            m_outline.unlist(listed);
        return;
    }
    const bool closed = int(m_blocks.size()) < kMoves;
    const int last = closed ? m_blocks.back() : m_blocks[kMoves - 1];
    m_outline.rebuildAbove(at, last, closed);
}

void Guard::endFormatting(int listed)
{
    const Listed &element = m_outline.listedEntry(listed);
    if (element.at < 0)
        m_outline.unlist(listed); // closed by a block: it is just not rebuilt
    else if (element.at >= m_outline.top(CatScope))
        closeFormatting(element.at);
}

bool Guard::inSelect() const
{
    const Id id = m_outline.currentId();
    return (id == Id::Select || id == Id::Option || id == Id::Optgroup) && m_outline.topmost("select", kSelect) >= 0;
}

bool Guard::openElement(const Tag &tag, TagInfo info, Namespace ns, std::size_t lt)
{
    const bool html = ns == Namespace::Html;
    const bool pushed = html && (info.flags & Formatting)
        ? m_outline.pushFormatting(tag.htmlName, tag.htmlHash, info, tag.attributes)
        : m_outline.push(html ? tag.htmlName : tag.name, html ? tag.htmlHash : tag.hash ^ kForeignSalt, info, ns);
    if (pushed) {
        keepTag();
        return true;
    }
    leaveOutTag(lt, tag.end);
    ++m_leftOut[html ? tag.htmlHash : tag.hash ^ kForeignSalt];
    m_result.tagsLeftOut = true;
    return false;
}

Guard::After Guard::startTag(const Tag &tag, std::size_t lt)
{
    TagInfo info = tag.info;
    const Entry *current = m_outline.current();
    // In a math text element, mglyph and malignmark stay math.
    const bool mathGlyph = current && current->ns == Namespace::Math && (current->info.flags & Integration)
        && (sameName(tag.name, "mglyph") || sameName(tag.name, "malignmark"));
    // An svg in annotation-xml is svg, not math.
    const bool svgInAnnotation = info.id == Id::Svg && current && current->ns == Namespace::Math
        && sameName(current->name, "annotation-xml");
    if ((m_outline.inForeignContent() || mathGlyph) && !svgInAnnotation) {
        if (!mathGlyph && ((info.flags & Breakout) || (info.id == Id::Font && tag.fontBreakout))) {
            m_outline.popTo(m_outline.top(CatHtml) + 1);
        } else {
            if (tag.selfClosing) {
                keepTag();
            } else {
                openElement(tag, foreignTag(tag.name, current->ns, tag.htmlEncoding), current->ns, lt);
            }
            return After::Next;
        }
    }
    if (inSelect()) {
        switch (info.id) {
        case Id::Option:
        case Id::Optgroup:
            if (m_outline.currentId() == Id::Option)
                m_outline.popTo(m_outline.depth() - 1);
            if (info.id == Id::Optgroup && m_outline.currentId() == Id::Optgroup)
                m_outline.popTo(m_outline.depth() - 1);
            openElement(tag, info, Namespace::Html, lt);
            return After::Next;
        case Id::Select:
            m_outline.popTo(m_outline.topmost("select", kSelect));
            keepTag();
            return After::Next;
        case Id::Input:
        case Id::Keygen:
        case Id::Textarea:
            m_outline.popTo(m_outline.topmost("select", kSelect));
            break; // and on as outside the select
        case Id::Script:
        case Id::Template:
            break;
        default:
            // A select inside a table ends where the table goes on.
            if ((info.flags & (Cell | Section | TableTag)) || info.id == Id::Tr || info.id == Id::Caption) {
                const int select = m_outline.topmost("select", kSelect);
                if (m_outline.top(CatTable) >= 0 && m_outline.top(CatTable) < select) {
                    m_outline.popTo(select);
                    break;
                }
            }
            keepTag(); // the parser ignores it
            return After::Next;
        }
    }
    const std::uint32_t f = info.flags;
    // The parser makes a form, rules and a line of text of its own for each
    // isindex: beyond a few hundred a page is only making work.
    if (info.id == Id::Isindex && ++m_isindexes > kMaxIsindexes) {
        leaveOutTag(lt, tag.end);
        m_result.tagsLeftOut = true;
        return After::Next;
    }
    if ((f & NoPush) || ((info.id == Id::Svg || info.id == Id::Math) && tag.selfClosing)) {
        if (!(f & NoPush))
            rebuild(lt);
        keepTag();
        return After::Next;
    }
    if (info.id == Id::Svg || info.id == Id::Math) {
        rebuild(lt);
        const Namespace ns = info.id == Id::Svg ? Namespace::Svg : Namespace::Math;
        openElement(tag, {info.id, 0}, ns, lt);
        return After::Next;
    }
    // Elements that close open ones of their kind first.
    if (info.id == Id::Li) {
        const int li = m_outline.topmost("li", kLi);
        if (li >= 0 && li >= m_outline.top(CatLiStop))
            m_outline.popTo(li);
    } else if (f & DdDt) {
        const int item = m_outline.top(CatDdDt);
        if (item >= 0 && item >= m_outline.top(CatLiStop))
            m_outline.popTo(item);
    }
    if (f & ClosesP)
        closeP();
    if (f & (Void | RawText) || info.id == Id::Plaintext) {
        if (!(f & NoRebuild))
            rebuild(lt);
        keepTag();
        return (f & RawText) ? After::RawText : info.id == Id::Plaintext ? After::Stop : After::Next;
    }
    current = m_outline.current();
    const int table = m_outline.top(CatTable);
    if (f & Heading) {
        if (current && !current->foreign() && (current->info.flags & Heading))
            m_outline.popTo(m_outline.depth() - 1);
    } else if (info.id == Id::Table) {
        // Straight in a table (not in a cell, caption or template) a table
        // ends the first one, even below elements put in front of the
        // table, an object or a marquee among them.
        if (inTableMode())
            m_outline.popTo(table);
    } else if ((f & (Cell | Section)) || info.id == Id::Tr || info.id == Id::Caption) {
        // In a table, or a template (which may hold table parts alone).
        const int holder = m_outline.top(CatTableScope);
        if (holder < 0) {
            keepTag(); // ignored outside a table
            return After::Next;
        }
        // Back to the table, its section or its row, whatever was opened
        // since (an open cell included).
        int context = holder;
        const int section = m_outline.top(CatSection);
        const int row = m_outline.topmost("tr", kTr);
        if ((f & Cell) && row > context)
            context = row;
        else if (((f & Cell) || info.id == Id::Tr) && section > context)
            context = section;
        m_outline.popTo(context + 1);
        // A table's row without a section, or cell without a row, gets them
        // made up, as the parser does; a template holds them as they come.
        if (m_outline.entry(holder).info.id == Id::Table) {
            if (((f & Cell) || info.id == Id::Tr) && section < holder)
                m_outline.push("tbody", kTbody, htmlTag("tbody"), Namespace::Html);
            if ((f & Cell) && row < holder)
                m_outline.push("tr", kTr, htmlTag("tr"), Namespace::Html);
        }
    } else if (info.id == Id::Option || info.id == Id::Optgroup) {
        if (m_outline.currentId() == Id::Option)
            m_outline.popTo(m_outline.depth() - 1);
    } else if (f & Ruby) {
        if (current && !current->foreign() && (current->info.flags & Ruby))
            m_outline.popTo(m_outline.depth() - 1);
    } else if (info.id == Id::Button) {
        const int button = m_outline.topmost("button", kButton);
        if (button >= 0 && button >= m_outline.top(CatScope))
            m_outline.popTo(button);
    } else if (info.id == Id::A || info.id == Id::Nobr) {
        // A new link ends the open one.
        if (info.id == Id::Nobr)
            rebuild(lt);
        const int listed = m_outline.listed(tag.name, tag.hash);
        if (listed >= 0)
            endFormatting(listed);
    } else if (info.id == Id::Form) {
        if (m_outline.topmost("form", kForm) >= 0) {
            keepTag(); // forms do not nest
            return After::Next;
        }
    }
    if (!(f & NoRebuild))
        rebuild(lt);
    openElement(tag, info, Namespace::Html, lt);
    return After::Next;
}

void Guard::endTag(const Tag &tag, std::size_t lt)
{
    if (!m_leftOut.empty()) {
        auto it = m_leftOut.find(tag.htmlHash);
        if (it == m_leftOut.end())
            it = m_leftOut.find(tag.hash ^ kForeignSalt);
        if (it != m_leftOut.end()) {
            leaveOutTag(lt, tag.end);
            if (--it->second == 0)
                m_leftOut.erase(it);
            return;
        }
    }
    const TagInfo info = tag.info;
    const int open = m_outline.topmost(tag.htmlName, tag.htmlHash);
    const int openForeign = m_outline.topmost(tag.name, tag.hash ^ kForeignSalt);
    // An end tag that closes nothing still has the parser walk its stack. A
    // stray </p> makes an empty paragraph and </br> a line break: kept.
    const int closes = (info.flags & Heading) ? m_outline.top(CatHeading) : open;
    // A formatting element closed by a block is still listed to be rebuilt.
    const int listed = (info.flags & Formatting) ? m_outline.listed(tag.htmlName, tag.htmlHash) : -1;
    if (closes < 0 && openForeign < 0 && listed < 0 && !m_keepNextEndTag && m_outline.depth() >= kStrayDepth && info.id != Id::P && info.id != Id::Br) {
        leaveOutTag(lt, tag.end);
        m_result.strayTagsLeftOut = true;
        return;
    }
    keepTag();
    // End tags follow svg and math rules whenever the current node is one
    // of theirs, integration points included.
    const Entry *current = m_outline.current();
    if (current && current->foreign() && openForeign > m_outline.top(CatHtmlElement)) {
        m_outline.popTo(openForeign);
        return;
    }
    const std::uint32_t f = info.flags;
    if (inSelect() && info.id != Id::Option && info.id != Id::Optgroup && info.id != Id::Select && info.id != Id::Template) {
        // A select ignores other end tags, except that one inside a table
        // ends with the table's parts.
        const bool tablePart = (f & (Cell | Section | TableTag)) || info.id == Id::Tr || info.id == Id::Caption;
        const int select = m_outline.topmost("select", kSelect);
        if (!tablePart || open < 0 || m_outline.top(CatTable) < 0 || m_outline.top(CatTable) > select)
            return;
        m_outline.popTo(select);
    }
    auto closeIn = [&](int at, Category scope) {
        if (at >= 0 && at >= m_outline.top(scope))
            m_outline.popTo(at);
    };
    switch (info.id) {
    case Id::P:
        closeIn(open, CatButton);
        break;
    case Id::Li:
        closeIn(open, CatList);
        break;
    case Id::Option:
    case Id::Optgroup:
        if (m_outline.currentId() == info.id)
            m_outline.popTo(m_outline.depth() - 1);
        break;
    case Id::Select:
    case Id::Template: // a template ends whatever it holds
        if (open >= 0)
            m_outline.popTo(open);
        break;
    case Id::Br: // read as <br>
        rebuild(lt);
        break;
    case Id::Form: // the form leaves the stack from wherever it is; the outline keeps it
        break;
    default:
        if (f & Heading)
            closeIn(m_outline.top(CatHeading), CatScope);
        else if ((f & Formatting) && listed >= 0)
            endFormatting(listed);
        else if ((f & Formatting) && open >= 0 && open > m_outline.top(CatSpecial))
            m_outline.popTo(open); // not listed: closed as any inline element
        else if ((f & (Cell | Section | TableTag)) || info.id == Id::Tr || info.id == Id::Caption)
            closeIn(open, CatTableScope);
        else if (f & (BlockEnd | DdDt))
            closeIn(open, CatScope);
        else if (open >= 0 && open >= m_outline.top(CatSpecial))
            m_outline.popTo(open); // nothing special opened inside it
        break;
    }
}

void Guard::rebuild(std::size_t at)
{
    const std::size_t first = m_outline.rebuildFrom();
    const std::size_t count = m_outline.listSize() - first;
    if (count == 0)
        return;
    if (m_rebuilt + count <= m_rebuildBudget) {
        m_rebuilt += count;
        m_outline.rebuild();
        return;
    }
    // Past its budget a page has the parser forget them instead: an end tag
    // for an element closed by a block only takes it off the list. The last
    // first, so each end tag finds the one meant.
    std::string ends;
    for (std::size_t i = m_outline.listSize(); i-- > first;) {
        ends += "</";
        ends += m_outline.listedEntry(int(i)).name;
        ends += '>';
        m_outline.unlist(int(i));
    }
    leaveOut(at, at, ends);
    m_result.tagsLeftOut = true;
}

bool Guard::inTableMode() const
{
    // The parser's table modes hold from a table until a cell, caption or
    // template inside it; elements put in front of the table (an object or
    // a marquee among them) leave them as they are.
    const int table = m_outline.top(CatTable);
    return table >= 0 && table >= m_outline.top(CatTableScope) && table > m_outline.top(CatCell)
        && table > m_outline.topmost("caption", kCaption);
}

void Guard::cdataAsText(std::size_t lt, std::size_t contentEnd, std::size_t end)
{
    // gumbo 0.10 fails an assertion, and aborts the program, when text
    // follows a CDATA section in an svg title or math mi inside a table.
    // The section is only text there: it goes to the parser as such.
    const std::size_t from = lt + 9;
    std::string text;
    text.reserve(contentEnd - from + 16);
    for (std::size_t i = from; i < contentEnd; ++i) {
        const char c = m_page[i];
        if (c == '&')
            text += "&amp;";
        else if (c == '<')
            text += "&lt;";
        else
            text += c;
    }
    if (contentEnd > from)
        textBefore(from, contentEnd);
    leaveOut(lt, end, text);
    m_result.tagsLeftOut = true;
}

bool Guard::textGathersInTable() const
{
    // Straight in a table the parser gathers a run of text up to the next
    // token and places it as a whole: beside the table when any of it is
    // not white space, in the table otherwise.
    const Entry *current = m_outline.current();
    return current && !current->foreign() && !inSelect()
        && (current->info.id == Id::Table || current->info.id == Id::Tr || (current->info.flags & Section));
}

void Guard::textBefore(std::size_t from, std::size_t to)
{
    // Text rebuilds the formatting elements closed by a block, except in
    // svg or math and in a select, and white space straight in a table.
    if (m_outline.inForeignContent() || inSelect())
        return;
    if (textGathersInTable() && std::all_of(m_page.begin() + std::ptrdiff_t(from), m_page.begin() + std::ptrdiff_t(to), isSpace))
        return;
    rebuild(from);
}

MarkupGuardResult Guard::run()
{
    const std::string_view p = m_page;
    const std::size_t n = p.size();
    std::size_t i = 0;
    unsigned tags = 0;
    bool afterPre = false; // the token before was <pre> or <listing>
    while (i < n) {
        if (m_shouldStop && (++tags & 4095) == 0 && m_shouldStop()) {
            m_result.stopped = true;
            return m_result;
        }
        const std::size_t lt = p.find('<', i);
        if (lt == std::string_view::npos || lt + 1 >= n)
            break;
        if (lt > i) {
            textBefore(i, lt);
            afterPre = false;
        }
        const char c = p[lt + 1];
        if (c == '!') {
            if (p.compare(lt + 2, 2, "--") == 0) {
                i = commentEnd(lt + 4);
            } else if (p.compare(lt + 2, 7, "[CDATA[") == 0 && m_outline.current() && m_outline.current()->foreign()) {
                const std::size_t end = p.find("]]>", lt + 9);
                i = end == std::string_view::npos ? n : end + 3;
                if ((m_outline.current()->info.flags & Integration) && inTableMode())
                    cdataAsText(lt, end == std::string_view::npos ? n : end, i);
            } else {
                const std::size_t end = p.find('>', lt + 2);
                i = end == std::string_view::npos ? n : end + 1;
            }
            afterPre = false;
        } else if (c == '?') {
            const std::size_t end = p.find('>', lt + 2);
            i = end == std::string_view::npos ? n : end + 1;
            afterPre = false;
        } else if (c == '/') {
            if (lt + 2 >= n)
                break;
            if (isLetter(p[lt + 2])) {
                const Tag tag = scanTag(lt + 2, true);
                if (tag.end == std::string_view::npos)
                    break;
                const Entry *current = m_outline.current();
                m_keepNextEndTag = afterPre
                    || (current && !current->foreign()
                        && (current->info.id == Id::Table || current->info.id == Id::Tr || (current->info.flags & Section)));
                endTag(tag, lt);
                i = tag.end;
                afterPre = false;
            } else if (p[lt + 2] == '>') {
                i = lt + 3; // no token at all
            } else {
                const std::size_t end = p.find('>', lt + 2);
                i = end == std::string_view::npos ? n : end + 1;
                afterPre = false;
            }
        } else if (isLetter(c)) {
            const Tag tag = scanTag(lt + 1, false);
            if (tag.end == std::string_view::npos)
                break;
            const After after = startTag(tag, lt);
            if (after == After::Stop)
                break;
            i = after == After::RawText ? skipRawText(tag) : tag.end;
            afterPre = after == After::Next && (sameName(tag.name, "pre") || sameName(tag.name, "listing"));
        } else {
            textBefore(lt, lt + 1); // a "<" that starts no tag is text
            i = lt + 1;
            afterPre = false;
        }
    }
    if (m_result.changed)
        m_out.append(p.substr(std::min(m_copied, n)));
    return m_result;
}

} // namespace

MarkupGuardResult guardMarkup(std::string_view page, std::string &out, const std::function<bool()> &shouldStop)
{
    return Guard(page, out, shouldStop).run();
}

} // namespace marvik::lookup
