// SPDX-License-Identifier: GPL-3.0-or-later
// Page text: charset decoding and the browser's innerText rendering the
// readers count on.
#include "core/lookup/HtmlText.h"
#include "core/lookup/MarkupGuard.h"

#include <QElapsedTimer>
#include <QStringDecoder>
#include <QTest>

#include <thread>

using namespace marvik::lookup;

class TestHtmlText : public QObject
{
    Q_OBJECT

private slots:
    void innerText_data();
    void innerText();
    void charset_data();
    void charset();
    void deepNestingIsFlatAndQuick();
    void guardKeepsWhatPagesShow_data();
    void guardKeepsWhatPagesShow();
    void hostilePagesTakeLinearTime_data();
    void hostilePagesTakeLinearTime();
    void limitsStopTheDecoding();
};

void TestHtmlText::innerText_data()
{
    QTest::addColumn<QString>("html");
    QTest::addColumn<QString>("text");

    // Expected texts follow the rendered-text rules: block boxes ask for one
    // line break, <p> for two, runs of asked-for breaks merge to the largest,
    // none at either end; cells end in a tab and rows in a line break except
    // the last of each; white space collapses to one blank and vanishes at
    // line ends.
    QTest::newRow("paragraphs") << u"<p>one</p><p>two</p>"_qs << u"one\r\n\r\ntwo"_qs;
    QTest::newRow("divs") << u"<div>one</div><div>two</div>"_qs << u"one\r\ntwo"_qs;
    QTest::newRow("paragraph in a div") << u"<div><p>one</p></div>two"_qs << u"one\r\n\r\ntwo"_qs;
    QTest::newRow("table") << u"<table><tr><td>a</td><td>b</td></tr><tr><td>c</td><td>d</td></tr></table>"_qs
                           << u"a\tb\r\nc\td"_qs;
    QTest::newRow("row groups share the table's last row")
        << u"<table><thead><tr><th>h1</th><th>h2</th></tr></thead><tbody><tr><td>a</td><td>b</td></tr></tbody></table>after"_qs
        << u"h1\th2\r\na\tb\r\nafter"_qs;
    QTest::newRow("cell white space") << u"<table><tr><td>  a  b  </td><td>\n c \n</td></tr></table>"_qs
                                      << u"a b\tc"_qs;
    QTest::newRow("hidden last cell gives no tab") << u"<table><tr><td>a</td><td hidden>b</td></tr></table>"_qs
                                                   << u"a"_qs;
    QTest::newRow("nested table")
        << u"<table><tr><td>x<table><tr><td>i</td><td>j</td></tr></table></td><td>y</td></tr></table>"_qs
        << u"x\r\ni\tj\r\n\ty"_qs;
    QTest::newRow("br") << u"a<br>b"_qs << u"a\r\nb"_qs;
    QTest::newRow("blanks around br") << u"a <br> b"_qs << u"a\r\nb"_qs;
    QTest::newRow("leading br is kept") << u"<br><br>a"_qs << u"\r\n\r\na"_qs;
    QTest::newRow("trailing br is kept") << u"a<br>"_qs << u"a\r\n"_qs;
    QTest::newRow("collapsed blanks") << u"  one \n\t two  "_qs << u"one two"_qs;
    QTest::newRow("blank across inline elements") << u"<b>a</b> <i> b</i>"_qs << u"a b"_qs;
    QTest::newRow("source line break is a blank") << u"a\r\nb"_qs << u"a b"_qs;
    QTest::newRow("entities") << u"&amp; &lt;tag&gt; &quot;q&quot; &eacute; &#8364; &#x41;"_qs
                              << u"& <tag> \"q\" \u00e9 \u20ac A"_qs;
    QTest::newRow("no-break spaces stay") << u"a&nbsp;&nbsp;b&nbsp;"_qs << u"a\u00a0\u00a0b\u00a0"_qs;
    QTest::newRow("scripts, styles, templates")
        << u"<script>var x = 1;</script>a<style>p{}</style><noscript>no</noscript><template>t</template>b"_qs
        << u"ab"_qs;
    QTest::newRow("hidden elements")
        << u"<div hidden>h</div><span style=\"color:red; DISPLAY : none !important\">s</span><input type=\"hidden\" value=\"v\">shown"_qs
        << u"shown"_qs;
    QTest::newRow("style makes a block") << u"<span style=\"display:block\">a</span>b"_qs << u"a\r\nb"_qs;
    QTest::newRow("head is not rendered") << u"<html><head><title>T</title></head><body>x</body></html>"_qs << u"x"_qs;
    QTest::newRow("pre keeps its blanks") << u"<pre>  a\n  b\n</pre>c"_qs << u"  a\r\n  b\r\n\r\nc"_qs;
    QTest::newRow("list") << u"<ul><li>a</li><li>b</li></ul>c"_qs << u"a\r\nb\r\nc"_qs;
    QTest::newRow("heading and rule") << u"<h1>T</h1>x<hr>y"_qs << u"T\r\nx\r\ny"_qs;
    QTest::newRow("select shows its options") << u"<select><option>one</option><option>two</option></select>"_qs
                                              << u"one\r\ntwo"_qs;
    QTest::newRow("closed details") << u"<details><summary>S</summary>hidden</details>x"_qs << u"S\r\nx"_qs;
    QTest::newRow("comment and image") << u"a<!-- c --><img alt=\"x\">b"_qs << u"ab"_qs;
    QTest::newRow("misnested tags") << u"<div><b>bold<i>both</div>after"_qs << u"boldboth\r\nafter"_qs;
    QTest::newRow("lone angle bracket") << u"a < b"_qs << u"a < b"_qs;
    QTest::newRow("page cut off inside a tag") << u"a<p"_qs << u"a"_qs;
    QTest::newRow("stray cell tags") << u"</td></tr></table>x<td>y"_qs << u"xy"_qs;
    // gumbo alone aborts on these: text after a CDATA section in a math
    // or svg element that holds html, inside a table.
    QTest::newRow("CDATA in math in a table") << u"<table><math><mi><![CDATA[a<b&amp;]]>c"_qs << u"a<b&amp;c"_qs;
    QTest::newRow("CDATA in math in a row")
        << u"<table><tr><math><mi><![CDATA[a<b]]>c</mi></math><td>d"_qs << u"a<bc\r\nd"_qs;
    QTest::newRow("CDATA in an svg title in a table") << u"<table><svg><title><![CDATA[x]]>/</svg>y"_qs << u"y"_qs;
    QTest::newRow("CDATA cut off in a table") << u"<table><math><mi><![CDATA[a"_qs << u"a"_qs;
    QTest::newRow("empty") << QString() << QString();
}

void TestHtmlText::innerText()
{
    QFETCH(QString, html);
    QFETCH(QString, text);
    QCOMPARE(htmlDecode(html), text);
}

void TestHtmlText::charset_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("contentType");
    QTest::addColumn<QString>("text");

    QTest::newRow("undeclared is windows-1252") << QByteArray("caf\xe9 \x80") << QByteArray() << u"caf\u00e9 \u20ac"_qs;
    QTest::newRow("iso-8859-1 is read as windows-1252")
        << QByteArray("\x80\x93") << QByteArray("text/html; charset=ISO-8859-1") << u"\u20ac\u201c"_qs;
    QTest::newRow("header utf-8") << QByteArray("caf\xc3\xa9") << QByteArray("text/html;charset=\"utf-8\"")
                                  << u"caf\u00e9"_qs;
    QTest::newRow("meta charset") << QByteArray("<meta charset=\"UTF-8\">caf\xc3\xa9") << QByteArray()
                                  << u"<meta charset=\"UTF-8\">caf\u00e9"_qs;
    QTest::newRow("meta http-equiv")
        << QByteArray("<META HTTP-EQUIV=Content-Type CONTENT='text/html; charset=utf-8'>\xc3\xa9") << QByteArray()
        << u"<META HTTP-EQUIV=Content-Type CONTENT='text/html; charset=utf-8'>\u00e9"_qs;
    QTest::newRow("header wins over meta") << QByteArray("<meta charset=utf-8>\xc3\xa9")
                                           << QByteArray("text/html; charset=windows-1252")
                                           << u"<meta charset=utf-8>\u00c3\u00a9"_qs;
    QTest::newRow("byte-order mark wins") << QByteArray("\xef\xbb\xbf\xc3\xa9") << QByteArray("text/html; charset=iso-8859-1")
                                          << u"\u00e9"_qs;
    QTest::newRow("meta in a comment does not count") << QByteArray("<!-- <meta charset=utf-8> -->\xe9")
                                                      << QByteArray() << u"<!-- <meta charset=utf-8> -->\u00e9"_qs;
    QTest::newRow("unknown charset") << QByteArray("\xe9") << QByteArray("text/html; charset=x-no-such") << u"\u00e9"_qs;
    QTest::newRow("a page cannot declare itself utf-16") << QByteArray("<meta charset=utf-16>\xc3\xa9") << QByteArray()
                                                         << u"<meta charset=utf-16>\u00e9"_qs;
}

void TestHtmlText::charset()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, contentType);
    QFETCH(QString, text);
    QCOMPARE(decodePage(bytes, contentType), text);
}

void TestHtmlText::deepNestingIsFlatAndQuick()
{
    // Hostile pages nest tags far deeper than any real one; gumbo frees its
    // trees recursively, and so would a naive walk.
    const QString html = u"<div>"_qs.repeated(100000) + u"deep"_qs + u"<span>"_qs.repeated(100000) + u"er"_qs;
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(htmlDecode(html), u"deeper"_qs);
    QVERIFY2(timer.elapsed() < 20000, qPrintable(QString::number(timer.elapsed())));
}

void TestHtmlText::guardKeepsWhatPagesShow_data()
{
    QTest::addColumn<QString>("html");
    QTest::addColumn<QString>("text");

    // What the guard's outline of the parser must get right: markup that
    // is text, markup that hides text, and where elements really end.
    QTest::newRow("tags inside xmp are text") << u"<xmp><b id=1>x</b></xmp>y"_qs << u"<b id=1>x</b>\r\ny"_qs;
    QTest::newRow("attributes in a comment") << u"a<!-- <b id=1 class=2> -->b"_qs << u"ab"_qs;
    QTest::newRow("short comment ends at once") << u"a<!--><div hidden>h</div>b"_qs << u"ab"_qs;
    QTest::newRow("hidden among many attributes")
        << (u"<span "_qs + u"data-x=1 "_qs.repeated(200) + u"hidden>h</span>shown"_qs) << u"shown"_qs;
    QTest::newRow("the first style counts") << u"<div style=\"display:none\" style=\"\">h</div>v"_qs << u"v"_qs;
    QTest::newRow("duplicate attribute before a style")
        << u"<div class=a class=b style=\"display:none\">h</div>v"_qs << u"v"_qs;
    // A NUL is U+FFFD inside a tag and nothing in text, as in a browser.
    QTest::newRow("a NUL in an open comment") << u"a<!--c><a>\0<b>d"_qs << u"a"_qs;
    QTest::newRow("a NUL in a name before another") << u"<b \0v v hidden>i</b>t"_qs << u"t"_qs;
    QTest::newRow("a NUL makes another name") << u"<b \0hidden>i</b>t"_qs << u"it"_qs;
    QTest::newRow("a NUL in a quoted value") << u"<b title=\"a>\0\" hidden>i</b>t"_qs << u"t"_qs;
    QTest::newRow("a NUL in text") << u"a\0b"_qs << u"ab"_qs;
    QTest::newRow("a NUL after a quote in a name") << u"<b a\">x\0y</b>"_qs << u"xy"_qs;
    QTest::newRow("a NUL after a quote in a tag's name") << u"<b\"><i t='>'>x\0y"_qs << u"xy"_qs;
    QTest::newRow("a quote in an unquoted value") << u"<b title=a\0\"b>i</b>\0t"_qs << u"it"_qs;
    QTest::newRow("a NUL after <") << u"a<\0b>c"_qs << u"a<b>c"_qs;
    QTest::newRow("a NUL in a reference") << u"&am\0p;"_qs << u"&amp;"_qs;
    QTest::newRow("style after many names on a formatting tag")
        << (u"<b "_qs + u"a b c d e f g h i j k l m n o p q r "_qs + u"style=\"display:none\">h</b>v"_qs) << u"v"_qs;
    QTest::newRow("a stray = after a repeated name") << u"<b a a=v =\">x"_qs << u"x"_qs;
    QTest::newRow("hidden formatting reopened in the next paragraph") << u"<p><b hidden>h</p>t"_qs << QString();
    QTest::newRow("self-closing svg element holds nothing") << u"<svg><g/>a</svg><div>b</div>"_qs << u"a\r\nb"_qs;
    QTest::newRow("div breaks out of svg") << u"<svg><g><div>a</div>b"_qs << u"a\r\nb"_qs;
    QTest::newRow("prompt of isindex")
        << u"<isindex prompt=\"Call?\" x=1>"_qs << u"Call?"_qs;
    // Deep pages, where end tags that close nothing are left out: whether
    // one closes something must be judged as the parser judges it.
    const QString deep = u"<span>"_qs.repeated(20);
    QTest::newRow("end tag of a formatting element rebuilt in svg")
        << deep + u"<b><footer><i></footer><svg></i><noframes><u></noframes>;"_qs << u";"_qs;
    QTest::newRow("template holds table parts") << u"<table><template><tbody>"_qs + deep + u"</template>W"_qs << u"W"_qs;
    QTest::newRow("cell gets a row made up") << u"<table><th>"_qs + deep + u"</tr>b"_qs << u"b"_qs;
    QTest::newRow("line break after pre and an end tag") << deep + u"<pre></h2>\nx</pre>"_qs << u"\r\nx"_qs;
    QTest::newRow("end tag of a special element inside another")
        << u"<noscript><header></noscript>"_qs + deep + u"W</header>>"_qs << u"W\r\n>"_qs;
    QTest::newRow("unknown end tag closes any unknown element")
        << u"<zz style=\"display:block\">"_qs + deep + u"x</qq>y"_qs << u"x\r\ny"_qs;
    QTest::newRow("formatting elements told apart by their attributes")
        << u"<b e==><table><td>b</td><b><b><b><b><div></b></b></b></b>s"_qs << u"b\r\ns"_qs;
    QTest::newRow("annotation-xml holds html only when it says so")
        << u"<math><annotation-xml><noframes><dt><script></noframes>"_qs + deep + u"</script>;"_qs << u";"_qs;
    QTest::newRow("an empty end tag stays apart from what follows")
        << deep + u"<b></></u><svg></svg><xmp><d"_qs << u"<d"_qs;
    QTest::newRow("a text < stays apart from what follows") << deep + u"<</dt>W"_qs << u"<W"_qs;
    QTest::newRow("a stray end tag ends a run of text in a table")
        << deep + u"<p><b><table>2</head>\n<v>x"_qs << u"2x"_qs;
    QTest::newRow("a formatting element closes in a ninth round of moves")
        << u"<b hidden>"_qs + u"<div>"_qs.repeated(16) + u"</b></b></b>x"_qs << u"x"_qs;
    QTest::newRow("a table put in front of a table ends it")
        << u"<table><object><table></table><div><td>"_qs + deep + u"x</div>y"_qs << u"x\r\ny"_qs;
    QTest::newRow("select inside a table ends with the table")
        << u"<table><tr><td><select><option>o</select><td>c</table>x"_qs << u"o\r\n\tc\r\nx"_qs;
}

void TestHtmlText::guardKeepsWhatPagesShow()
{
    QFETCH(QString, html);
    QFETCH(QString, text);
    QCOMPARE(htmlDecode(html), text);
    // And the same as the markup parsed without the guard.
    DecodeLimits unguarded;
    unguarded.guardMarkup = false;
    QCOMPARE(htmlDecode(html, unguarded).text, text);
}

namespace {

/// The fastest of two decodings, in milliseconds.
qint64 decodeMs(const QByteArray &page, DecodedPage &decoded)
{
    qint64 best = std::numeric_limits<qint64>::max();
    for (int run = 0; run < 2; ++run) {
        QElapsedTimer timer;
        timer.start();
        decoded = decodePageText(page, {}, {});
        best = std::min(best, timer.elapsed());
    }
    return best;
}

} // namespace

void TestHtmlText::hostilePagesTakeLinearTime_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QByteArray>("unit");
    QTest::addColumn<QByteArray>("tail");
    QTest::addColumn<int>("xsPerUnit");

    const QByteArray deep = QByteArray("<span>").repeated(kMaxMarkupDepth - 1);
    QByteArray attributes = "<span";
    for (int i = 0; i < 40; ++i)
        attributes += " a" + QByteArray::number(i) + "=v";
    // Every row keeps one x per unit of text; none may be lost.
    QTest::newRow("self-closing") << QByteArray() << QByteArray("<div/>x") << QByteArray() << 1;
    QTest::newRow("unclosed") << QByteArray() << QByteArray("<div>x") << QByteArray() << 1;
    QTest::newRow("deeply nested") << QByteArray() << QByteArray("<div><span><b>x") << QByteArray("</b></span></div>") << 1;
    QTest::newRow("many attributes per tag") << QByteArray() << attributes + ">x</span>" << QByteArray() << 1;
    QTest::newRow("one tag, endless attributes") << QByteArray("<div") << QByteArray(" a b=c") << QByteArray(">x</div>") << 0;
    QTest::newRow("long attribute value") << QByteArray("<div title=\"") << QByteArray("vvvvvvvv") << QByteArray("\">x</div>") << 0;
    QTest::newRow("entities") << QByteArray() << QByteArray("&amp;x&#x41;") << QByteArray() << 1;
    QTest::newRow("huge text") << QByteArray() << QByteArray("xxxxxxxx") << QByteArray() << 8;
    QTest::newRow("long comment") << QByteArray("<!--") << QByteArray("cccccccc") << QByteArray("-->x") << 0;
    QTest::newRow("stray end tags, deep") << deep << QByteArray("</i>x") << QByteArray() << 1;
    QTest::newRow("paragraphs, deep") << deep << QByteArray("<p>x") << QByteArray() << 1;
    QByteArray reopened = "<p>";
    for (int i = 0; i < 200; ++i)
        reopened += "<b x=" + QByteArray::number(i) + '>';
    QTest::newRow("formatting reopened in every paragraph") << reopened << QByteArray("<p>x") << QByteArray() << 1;
    QTest::newRow("list items in divs") << QByteArray("<div>").repeated(kMaxMarkupDepth - 1) << QByteArray("<li>x")
                                        << QByteArray() << 1;
}

void TestHtmlText::hostilePagesTakeLinearTime()
{
    QFETCH(QByteArray, head);
    QFETCH(QByteArray, unit);
    QFETCH(QByteArray, tail);
    QFETCH(int, xsPerUnit);

    // A page four times the size may take about four times as long, not
    // sixteen as markup that makes the parser's work grow with the square
    // of the page did.
    const qsizetype small = 256 * 1024 / unit.size();
    const QByteArray smallPage = head + unit.repeated(small) + tail;
    const QByteArray largePage = head + unit.repeated(4 * small) + tail;
    DecodedPage decoded;
    const qint64 smallMs = decodeMs(smallPage, decoded);
    QCOMPARE(decoded.error, PageTextError::None);
    QCOMPARE(decoded.text.count(u'x'), xsPerUnit * small + (xsPerUnit ? 0 : 1));
    const qint64 largeMs = decodeMs(largePage, decoded);
    QCOMPARE(decoded.error, PageTextError::None);
    QCOMPARE(decoded.text.count(u'x'), xsPerUnit * 4 * small + (xsPerUnit ? 0 : 1));
    QVERIFY2(largeMs < 8 * smallMs + 100, qPrintable(u"%1 ms, then %2 ms"_qs.arg(smallMs).arg(largeMs)));
}

void TestHtmlText::limitsStopTheDecoding()
{
    // A formatting element with a style of a megabyte, left open, is
    // rebuilt with all its style in every paragraph: the parser would build
    // a gigabyte for a page of one megabyte. That is too complex to read.
    const QByteArray reopened = "<p><b style=\"" + QByteArray(1024 * 1024, 'x') + "\">" + QByteArray("<p>t").repeated(1000);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(decodePageText(reopened, {}, {}).error, PageTextError::TooComplex);
    QVERIFY2(timer.elapsed() < 20000, qPrintable(QString::number(timer.elapsed())));

    // A deadline or a word from another thread stops a decoding midway.
    const QByteArray page = QByteArray("<p>x").repeated(300000);
    std::atomic<bool> stop{false};
    timer.restart();
    const DecodedPage whole = decodePageText(page, {}, {QDeadlineTimer::Forever, &stop});
    const qint64 wholeMs = timer.elapsed();
    QCOMPARE(whole.error, PageTextError::None);
    QCOMPARE(whole.text.count(u'x'), 300000);

    timer.restart();
    QCOMPARE(decodePageText(page, {}, {QDeadlineTimer(wholeMs / 10), nullptr}).error, PageTextError::OutOfTime);
    QVERIFY2(timer.elapsed() < wholeMs / 2, qPrintable(u"%1 of %2 ms"_qs.arg(timer.elapsed()).arg(wholeMs)));

    std::thread stopper([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(wholeMs / 10));
        stop = true;
    });
    timer.restart();
    const PageTextError error = decodePageText(page, {}, {QDeadlineTimer::Forever, &stop}).error;
    const qint64 stoppedMs = timer.elapsed();
    stopper.join();
    QCOMPARE(error, PageTextError::Cancelled);
    QVERIFY2(stoppedMs < wholeMs / 2, qPrintable(u"%1 of %2 ms"_qs.arg(stoppedMs).arg(wholeMs)));
}

QTEST_GUILESS_MAIN(TestHtmlText)
#include "tst_htmltext.moc"
