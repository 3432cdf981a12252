// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/MarkupGuard.h"

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

constexpr std::uint64_t kP = nameHash("p");
constexpr std::uint64_t kLi = nameHash("li");
constexpr std::uint64_t kTr = nameHash("tr");
constexpr std::uint64_t kSelect = nameHash("select");
constexpr std::uint64_t kButton = nameHash("button");
constexpr std::uint64_t kForm = nameHash("form");

// ---------------------------------------------------------------------------
// What the parser does with each tag name

enum class Id : std::uint8_t {
    Other, A, Body, Br, Button, Caption, Dd, Dt, Font, Form, Head, Html, Input, Keygen, Li, Math, Nobr, Ol, Optgroup,
    Option, P, Plaintext, Rb, Rp, Rt, Rtc, Script, Select, Svg, Table, Template, Textarea, Tr, Ul
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
};

struct TagInfo
{
    Id id = Id::Other;
    std::uint32_t flags = 0;
};

/// The HTML elements as the parser we build on (gumbo 0.10) knows them:
/// it predates dialog and search, which it treats as any unknown element.
const std::unordered_map<std::string_view, TagInfo> &htmlTags()
{
    static const std::unordered_map<std::string_view, TagInfo> tags = [] {
        constexpr std::uint32_t S = Special;
        constexpr std::uint32_t CP = ClosesP | Special;
        constexpr std::uint32_t B = Breakout;
        std::unordered_map<std::string_view, TagInfo> t{
            {"a", {Id::A, Formatting}},
            {"address", {Id::Other, CP | NotLiStop}},
            {"applet", {Id::Other, S | Scope}},
            {"area", {Id::Other, S | Void}},
            {"article", {Id::Other, CP}},
            {"aside", {Id::Other, CP}},
            {"b", {Id::Other, Formatting | B}},
            {"base", {Id::Other, S | Void}},
            {"basefont", {Id::Other, S | Void}},
            {"bgsound", {Id::Other, S | Void}},
            {"big", {Id::Other, Formatting | B}},
            {"blockquote", {Id::Other, CP | B}},
            {"body", {Id::Body, S | NoPush | B}},
            {"br", {Id::Br, S | Void | B}},
            {"button", {Id::Button, S}},
            {"caption", {Id::Caption, S | Scope}},
            {"center", {Id::Other, CP | B}},
            {"code", {Id::Other, Formatting | B}},
            {"col", {Id::Other, S | Void}},
            {"colgroup", {Id::Other, S | NoPush}},
            {"dd", {Id::Dd, CP | DdDt | B}},
            {"details", {Id::Other, CP}},
            {"dir", {Id::Other, CP}},
            {"div", {Id::Other, CP | NotLiStop | B}},
            {"dl", {Id::Other, CP | B}},
            {"dt", {Id::Dt, CP | DdDt | B}},
            {"em", {Id::Other, Formatting | B}},
            {"embed", {Id::Other, S | Void | B}},
            {"fieldset", {Id::Other, CP}},
            {"figcaption", {Id::Other, CP}},
            {"figure", {Id::Other, CP}},
            {"font", {Id::Font, Formatting}},
            {"footer", {Id::Other, CP}},
            {"form", {Id::Form, CP}},
            {"frame", {Id::Other, S | Void}},
            {"frameset", {Id::Other, S | NoPush}},
            {"h1", {Id::Other, CP | Heading | B}},
            {"h2", {Id::Other, CP | Heading | B}},
            {"h3", {Id::Other, CP | Heading | B}},
            {"h4", {Id::Other, CP | Heading | B}},
            {"h5", {Id::Other, CP | Heading | B}},
            {"h6", {Id::Other, CP | Heading | B}},
            {"head", {Id::Head, S | NoPush | B}},
            {"header", {Id::Other, CP}},
            {"hgroup", {Id::Other, CP}},
            {"hr", {Id::Other, CP | Void | B}},
            {"html", {Id::Html, S | NoPush}},
            {"i", {Id::Other, Formatting | B}},
            {"iframe", {Id::Other, S | RawText}},
            {"image", {Id::Other, Void}},
            {"img", {Id::Other, S | Void | B}},
            {"input", {Id::Input, S | Void}},
            {"isindex", {Id::Other, S | Void}},
            {"keygen", {Id::Keygen, S | Void}},
            {"li", {Id::Li, CP | B}},
            {"link", {Id::Other, S | Void}},
            {"listing", {Id::Other, CP | B}},
            {"main", {Id::Other, CP}},
            {"marquee", {Id::Other, S | Scope}},
            {"math", {Id::Math, 0}},
            {"menu", {Id::Other, CP | B}},
            {"meta", {Id::Other, S | Void | B}},
            {"nav", {Id::Other, CP}},
            {"nobr", {Id::Nobr, Formatting | B}},
            {"noembed", {Id::Other, S | RawText}},
            {"noframes", {Id::Other, S | RawText}},
            {"noscript", {Id::Other, S}},
            {"object", {Id::Other, S | Scope}},
            {"ol", {Id::Ol, CP | ListScope | B}},
            {"optgroup", {Id::Optgroup, 0}},
            {"option", {Id::Option, 0}},
            {"p", {Id::P, CP | NotLiStop | B}},
            {"param", {Id::Other, S | Void}},
            {"plaintext", {Id::Plaintext, CP}},
            {"pre", {Id::Other, CP | B}},
            {"rb", {Id::Rb, Ruby}},
            {"rp", {Id::Rp, Ruby}},
            {"rt", {Id::Rt, Ruby}},
            {"rtc", {Id::Rtc, Ruby}},
            {"ruby", {Id::Other, B}},
            {"s", {Id::Other, Formatting | B}},
            {"script", {Id::Script, S | RawText}},
            {"section", {Id::Other, CP}},
            {"select", {Id::Select, S}},
            {"small", {Id::Other, Formatting | B}},
            {"source", {Id::Other, S | Void}},
            {"span", {Id::Other, B}},
            {"strike", {Id::Other, Formatting | B}},
            {"strong", {Id::Other, Formatting | B}},
            {"style", {Id::Other, S | RawText}},
            {"sub", {Id::Other, B}},
            {"summary", {Id::Other, CP}},
            {"sup", {Id::Other, B}},
            {"svg", {Id::Svg, 0}},
            {"table", {Id::Table, CP | Scope | TableScope | TableTag | B}},
            {"tbody", {Id::Other, S | Section}},
            {"td", {Id::Other, S | Scope | Cell}},
            {"template", {Id::Template, S | Scope | TableScope}},
            {"textarea", {Id::Textarea, S | RawText}},
            {"tfoot", {Id::Other, S | Section}},
            {"th", {Id::Other, S | Scope | Cell}},
            {"thead", {Id::Other, S | Section}},
            {"title", {Id::Other, S | RawText}},
            {"tr", {Id::Tr, S}},
            {"track", {Id::Other, S | Void}},
            {"tt", {Id::Other, Formatting | B}},
            {"u", {Id::Other, Formatting | B}},
            {"ul", {Id::Ul, CP | ListScope | B}},
            {"var", {Id::Other, B}},
            {"wbr", {Id::Other, S | Void}},
            {"xmp", {Id::Other, CP | RawText}},
        };
        return t;
    }();
    return tags;
}

enum class Namespace : std::uint8_t { Html, Svg, Math };

/// Elements inside svg and math where markup is HTML again; they bound
/// scopes like applet and object do.
bool isIntegrationPoint(std::string_view name, Namespace ns)
{
    if (ns == Namespace::Svg)
        return sameName(name, "foreignobject") || sameName(name, "desc") || sameName(name, "title");
    for (std::string_view n : {"mi", "mo", "mn", "ms", "mtext", "annotation-xml"}) {
        if (sameName(name, n))
            return true;
    }
    return false;
}

TagInfo htmlTag(std::string_view name)
{
    std::array<char, 16> buffer{};
    if (name.size() > buffer.size())
        return {};
    std::transform(name.begin(), name.end(), buffer.begin(), lower);
    const auto &tags = htmlTags();
    const auto it = tags.find(std::string_view(buffer.data(), name.size()));
    return it == tags.end() ? TagInfo{} : it->second;
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

bool isFontBreakoutAttribute(int kept)
{
    return kept >= 5 && kept <= 7; // color, face, size
}

// ---------------------------------------------------------------------------
// The outline of the parser's stack of open elements

enum Category { CatSpecial, CatScope, CatButton, CatList, CatTableScope, CatLiStop, CatHeading, CatDdDt, CatCell,
                CatSection, CatTable, CatHtml, CatCount };

struct Entry
{
    std::string_view name;
    std::uint64_t hash = 0;
    TagInfo info;
    Namespace ns = Namespace::Html;
    bool foreign() const { return ns != Namespace::Html; }
    std::int32_t below = -1; ///< the next lower entry in the same hash bucket
    std::array<std::int32_t, CatCount> top{}; ///< topmost entry of each category at or below this one
};

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
        const bool boundary = (f & Scope) || (foreign && (f & Integration));
        auto mark = [&](Category c, bool member) {
            if (member)
                e.top[c] = at;
        };
        mark(CatSpecial, (f & Special) || (foreign && (f & Integration)));
        mark(CatScope, boundary);
        mark(CatButton, boundary || (!foreign && info.id == Id::Button));
        mark(CatList, boundary || (!foreign && (f & ListScope)));
        mark(CatTableScope, !foreign && (f & TableScope));
        mark(CatLiStop, ((f & Special) || (foreign && (f & Integration))) && !(f & NotLiStop));
        mark(CatHeading, !foreign && (f & Heading));
        mark(CatDdDt, !foreign && (f & DdDt));
        mark(CatCell, !foreign && (f & Cell));
        mark(CatSection, !foreign && (f & Section));
        mark(CatTable, !foreign && (f & TableTag));
        mark(CatHtml, !foreign || (f & Integration));
        std::int32_t &bucket = m_buckets[hash % kBuckets];
        e.below = bucket;
        bucket = at;
        m_stack.push_back(e);
        return true;
    }

    /// Pops the entry at `at` and everything above it.
    void popTo(int at)
    {
        while (int(m_stack.size()) > std::max(at, 0)) {
            const Entry &e = m_stack.back();
            m_buckets[e.hash % kBuckets] = e.below;
            m_stack.pop_back();
        }
    }

    /// The lowest entry above `at` that belongs to the category, or -1.
    int firstAbove(int at, Category c) const
    {
        for (int i = at + 1; i < depth(); ++i) {
            if (m_stack[std::size_t(i)].top[c] == i)
                return i;
        }
        return -1;
    }

    /// Takes one entry out from under others, as the parser does with a
    /// formatting element closed across a block.
    void removeAt(int at)
    {
        m_moved.assign(m_stack.begin() + at + 1, m_stack.end());
        popTo(at);
        for (const Entry &e : m_moved)
            push(e.name, e.hash, e.info, e.ns);
    }

private:
    static constexpr std::size_t kBuckets = 4096;

    std::vector<Entry> m_stack;
    std::vector<Entry> m_moved;
    std::array<std::int32_t, kBuckets> m_buckets;
};

// ---------------------------------------------------------------------------
// The pass over the page

struct Tag
{
    std::size_t end = std::string_view::npos; ///< after its '>'; npos: the page ends inside the tag
    std::string_view name;
    std::uint64_t hash = 0;
    bool selfClosing = false;
    bool fontBreakout = false;
};

class Guard
{
public:
    Guard(std::string_view page, std::string &out, const std::function<bool()> &shouldStop)
        : m_page(page)
        , m_out(out)
        , m_shouldStop(shouldStop)
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
    bool inSelect() const;
    std::size_t skipRawText(const Tag &tag);
    std::size_t commentEnd(std::size_t from) const;

    // Output: the page with ranges left out, copied only once something is.
    void leaveOut(std::size_t from, std::size_t to, std::string_view instead = {});
    void keepTag();

    std::string_view m_page;
    std::string &m_out;
    const std::function<bool()> &m_shouldStop;
    std::size_t m_copied = 0;
    MarkupGuardResult m_result;
    Outline m_outline;
    std::vector<std::pair<std::size_t, std::size_t>> m_cuts; ///< attributes of the last tag scanned to leave out
    std::unordered_map<std::uint64_t, std::uint32_t> m_leftOut; ///< start tags left out per name, awaiting their end tags
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
    m_cuts.clear();
    unsigned seen = 0;
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
                attrEnd = i = close + 1;
            } else if (p[j] == '>') {
                attrEnd = i = j;
            } else {
                while (j < n && !isSpace(p[j]) && p[j] != '>')
                    ++j;
                attrEnd = i = j;
            }
        }
        const int kept = endTag ? -1 : keptAttribute(attrName);
        if (kept >= 0 && isFontBreakoutAttribute(kept))
            tag.fontBreakout = true;
        if (kept >= 0 && !(seen & (1u << kept)))
            seen |= 1u << kept;
        else
            m_cuts.emplace_back(attrStart, attrEnd);
    }
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

std::size_t Guard::skipRawText(const Tag &tag)
{
    // The element's text runs to its own end tag, whatever the case.
    const std::string_view p = m_page;
    std::size_t at = tag.end;
    for (;;) {
        at = p.find("</", at);
        if (at == std::string_view::npos)
            return p.size();
        const std::size_t after = at + 2 + tag.name.size();
        if (after <= p.size() && sameName(p.substr(at + 2, tag.name.size()), tag.name)
            && (after == p.size() || isSpace(p[after]) || p[after] == '/' || p[after] == '>'))
            break;
        at += 2;
    }
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
    // With a block opened inside it, the parser moves the formatting element
    // into that block, and the block is then the current node.
    const int block = m_outline.firstAbove(at, CatSpecial);
    if (block < 0) {
        m_outline.popTo(at);
        return;
    }
    m_outline.popTo(block + 1);
    m_outline.removeAt(at);
}

bool Guard::inSelect() const
{
    const Id id = m_outline.currentId();
    return (id == Id::Select || id == Id::Option || id == Id::Optgroup) && m_outline.topmost("select", kSelect) >= 0;
}

bool Guard::openElement(const Tag &tag, TagInfo info, Namespace ns, std::size_t lt)
{
    if (m_outline.push(tag.name, tag.hash, info, ns)) {
        keepTag();
        return true;
    }
    leaveOut(lt, tag.end);
    ++m_leftOut[tag.hash];
    m_result.tagsLeftOut = true;
    return false;
}

Guard::After Guard::startTag(const Tag &tag, std::size_t lt)
{
    TagInfo info = htmlTag(tag.name);
    const Entry *current = m_outline.current();
    // In a math text element, mglyph and malignmark stay math.
    const bool mathGlyph = current && current->ns == Namespace::Math && (current->info.flags & Integration)
        && (sameName(tag.name, "mglyph") || sameName(tag.name, "malignmark"));
    if (m_outline.inForeignContent() || mathGlyph) {
        if (!mathGlyph && ((info.flags & Breakout) || (info.id == Id::Font && tag.fontBreakout))) {
            m_outline.popTo(m_outline.top(CatHtml) + 1);
        } else {
            if (tag.selfClosing) {
                keepTag();
            } else {
                const TagInfo foreignInfo{Id::Other, isIntegrationPoint(tag.name, current->ns) ? std::uint32_t(Integration) : 0u};
                openElement(tag, foreignInfo, current->ns, lt);
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
    if ((f & NoPush) || ((info.id == Id::Svg || info.id == Id::Math) && tag.selfClosing)) {
        keepTag();
        return After::Next;
    }
    if (info.id == Id::Svg || info.id == Id::Math) {
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
        keepTag();
        return (f & RawText) ? After::RawText : info.id == Id::Plaintext ? After::Stop : After::Next;
    }
    current = m_outline.current();
    const int table = m_outline.top(CatTable);
    if (f & Heading) {
        if (current && !current->foreign() && (current->info.flags & Heading))
            m_outline.popTo(m_outline.depth() - 1);
    } else if (info.id == Id::Table) {
        // Straight in a table (not in a cell or caption) a table ends the
        // first one, even below elements put in front of the table.
        if (table >= 0 && table == m_outline.top(CatScope))
            m_outline.popTo(table);
    } else if ((f & (Cell | Section)) || info.id == Id::Tr || info.id == Id::Caption) {
        if (table < 0) {
            keepTag(); // ignored outside a table
            return After::Next;
        }
        // Back to the table, its section or its row, whatever was opened
        // since (an open cell included).
        int context = table;
        const int section = m_outline.top(CatSection);
        const int row = m_outline.topmost("tr", kTr);
        if ((f & Cell) && row > table)
            context = row;
        else if (((f & Cell) || info.id == Id::Tr) && section > table)
            context = section;
        m_outline.popTo(context + 1);
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
        const int open = m_outline.topmost(tag.name, tag.hash);
        if (open >= 0 && open >= m_outline.top(CatScope))
            closeFormatting(open);
    } else if (info.id == Id::Form) {
        if (m_outline.topmost("form", kForm) >= 0) {
            keepTag(); // forms do not nest
            return After::Next;
        }
    }
    openElement(tag, info, Namespace::Html, lt);
    return After::Next;
}

void Guard::endTag(const Tag &tag, std::size_t lt)
{
    if (!m_leftOut.empty()) {
        const auto it = m_leftOut.find(tag.hash);
        if (it != m_leftOut.end()) {
            leaveOut(lt, tag.end);
            if (--it->second == 0)
                m_leftOut.erase(it);
            return;
        }
    }
    const TagInfo info = htmlTag(tag.name);
    const int open = m_outline.topmost(tag.name, tag.hash);
    // An end tag that closes nothing still has the parser walk its stack. A
    // stray </p> makes an empty paragraph and </br> a line break: kept.
    const int closes = (info.flags & Heading) ? m_outline.top(CatHeading) : open;
    if (closes < 0 && m_outline.depth() >= kStrayDepth && info.id != Id::P && info.id != Id::Br) {
        leaveOut(lt, tag.end);
        m_result.tagsLeftOut = true;
        return;
    }
    keepTag();
    if (m_outline.inForeignContent() && open > m_outline.top(CatHtml)) {
        m_outline.popTo(open);
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
        if (open >= 0)
            m_outline.popTo(open);
        break;
    case Id::Br:   // read as <br>
    case Id::Form: // the form leaves the stack from wherever it is; the outline keeps it
        break;
    default:
        if (f & Heading)
            closeIn(m_outline.top(CatHeading), CatScope);
        else if (f & Formatting) {
            if (open >= 0 && open >= m_outline.top(CatScope))
                closeFormatting(open);
        } else if ((f & (Cell | Section | TableTag)) || info.id == Id::Tr || info.id == Id::Caption)
            closeIn(open, CatTableScope);
        else if (f & Special)
            closeIn(open, CatScope);
        else if (open >= 0 && open > m_outline.top(CatSpecial))
            m_outline.popTo(open);
        break;
    }
}

MarkupGuardResult Guard::run()
{
    const std::string_view p = m_page;
    const std::size_t n = p.size();
    std::size_t i = 0;
    unsigned tags = 0;
    while (i < n) {
        if (m_shouldStop && (++tags & 4095) == 0 && m_shouldStop()) {
            m_result.stopped = true;
            return m_result;
        }
        const std::size_t lt = p.find('<', i);
        if (lt == std::string_view::npos || lt + 1 >= n)
            break;
        const char c = p[lt + 1];
        if (c == '!') {
            if (p.compare(lt + 2, 2, "--") == 0) {
                i = commentEnd(lt + 4);
            } else if (p.compare(lt + 2, 7, "[CDATA[") == 0 && m_outline.current() && m_outline.current()->foreign()) {
                const std::size_t end = p.find("]]>", lt + 9);
                i = end == std::string_view::npos ? n : end + 3;
            } else {
                const std::size_t end = p.find('>', lt + 2);
                i = end == std::string_view::npos ? n : end + 1;
            }
        } else if (c == '?') {
            const std::size_t end = p.find('>', lt + 2);
            i = end == std::string_view::npos ? n : end + 1;
        } else if (c == '/') {
            if (lt + 2 >= n)
                break;
            if (isLetter(p[lt + 2])) {
                const Tag tag = scanTag(lt + 2, true);
                if (tag.end == std::string_view::npos)
                    break;
                endTag(tag, lt);
                i = tag.end;
            } else if (p[lt + 2] == '>') {
                i = lt + 3;
            } else {
                const std::size_t end = p.find('>', lt + 2);
                i = end == std::string_view::npos ? n : end + 1;
            }
        } else if (isLetter(c)) {
            const Tag tag = scanTag(lt + 1, false);
            if (tag.end == std::string_view::npos)
                break;
            const After after = startTag(tag, lt);
            if (after == After::Stop)
                break;
            i = after == After::RawText ? skipRawText(tag) : tag.end;
        } else {
            i = lt + 1;
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
