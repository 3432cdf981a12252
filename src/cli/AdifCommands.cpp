// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/AdifCommands.h"

#include "cli/CliCommands.h"
#include "core/app/Config.h"
#include "core/app/DataFolder.h"
#include "core/lists/CallListModel.h"
#include "core/lists/ListFile.h"
#include "core/logs/AdifExport.h"
#include "core/logs/AdifImport.h"
#include "core/logs/ListRefresh.h"
#include "core/logs/PageRefreshLookup.h"
#include "core/logs/RefreshSettings.h"
#include "core/lookup/CookieJar.h"

#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QNetworkAccessManager>

namespace marvik::cli {

namespace {

/// Problems and skipped records listed one by one before "and N more".
constexpr int kListedWarnings = 5;

const QString kSources = QStringLiteral("(1..5, eham, qrz, qrzcq, callook, hamcall)");

/// A list named on the command line: 1..5.
int listNumber(const QString &text)
{
    bool ok = false;
    const int n = text.toInt(&ok);
    return ok && n >= 1 && n <= 5 ? n : 0;
}

/// Everything a command needs of the data folder: Marvik.cfg and one list.
struct ListAtHand
{
    app::DataFolder folder;
    app::Settings settings;
    QString path;
    lists::CallListModel model;

    ListAtHand(const QString &dataDir, int list)
        : folder(dataDir)
        , path(folder.listFile(list))
    {
        app::readConfig(folder.configFile(), settings);
    }

    lists::LoadContext context() const { return {settings.me, folder.thumbsDir(), {}}; }

    /// Reads the list file when there is one. A damaged file is left alone:
    /// saving what could be read of it would lose the rest.
    bool load(QTextStream &err)
    {
        if (!QFileInfo::exists(path))
            return true;
        const lists::LoadReport report = lists::loadList(model, path, context(), settings.sortMode);
        if (!report.opened) {
            err << "marvik-cli: cannot read " << path << ": " << report.errorString << '\n';
            return false;
        }
        if (report.badLine > 0) {
            err << "marvik-cli: " << path << " is damaged at line " << report.badLine
                << "; open it in Marvik first\n";
            return false;
        }
        return true;
    }
};

QString duration(qint64 ms)
{
    const qint64 s = (ms + 999) / 1000;
    if (s < 90)
        return QStringLiteral("%1 s").arg(s);
    if (s < 90 * 60)
        return QStringLiteral("%1 min").arg((s + 30) / 60);
    return QStringLiteral("%1 h %2 min").arg(s / 3600).arg((s % 3600 + 30) / 60);
}

const QString &skipReasonText(logs::SkipReason reason)
{
    static const QString noCall = QStringLiteral("no call");
    static const QString badCall = QStringLiteral("not a callsign");
    return reason == logs::SkipReason::NoCall ? noCall : badCall;
}

} // namespace

int importAdif(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err)
{
    const QString &file = args.at(0);
    const int list = listNumber(args.at(1));
    if (list == 0) {
        err << "marvik-cli: not a list number (1..5): " << args.at(1) << '\n';
        return BadArguments;
    }
    ListAtHand at(dataDir, list);
    if (!at.load(err))
        return WorkFailed;
    QDir().mkpath(at.folder.path());

    logs::ImportSummary summary;
    QString why;
    const logs::ImportContext context{at.settings.me, at.folder.thumbsDir(), {}};
    if (!logs::importAdifFile(file, at.model, at.path, at.settings.sortMode, context, summary, &why)) {
        err << "marvik-cli: " << (summary.records > 0 ? at.path : file) << ": " << why << '\n';
        return WorkFailed;
    }
    for (int i = 0; i < std::min<int>(kListedWarnings, int(summary.problems.size())); ++i)
        err << "marvik-cli: " << file << ": " << logs::problemText(summary.problems[i]) << '\n';
    if (summary.problemCount > kListedWarnings)
        err << "marvik-cli: " << file << ": and " << summary.problemCount - kListedWarnings << " more problems\n";
    const int listed = std::min<int>(kListedWarnings, int(summary.skippedRecords.size()));
    for (int i = 0; i < listed; ++i) {
        const logs::SkippedRecord &s = summary.skippedRecords[i];
        err << "marvik-cli: " << file << ": line " << s.line << ": record skipped: " << skipReasonText(s.reason);
        if (!s.call.isEmpty())
            err << " (" << s.call << ')';
        err << '\n';
    }
    if (summary.skipped() > listed)
        err << "marvik-cli: " << file << ": and " << summary.skipped() - listed << " more records skipped\n";
    out << logs::summaryText(summary) << '\n';
    return Success;
}

int exportAdif(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err)
{
    const QString usage = QStringLiteral(
        "marvik-cli: usage: marvik-cli [--data-dir DIR] export-adif LIST FILE [--adx] [--band BAND] [--mode MODE]\n");
    QStringList positional;
    logs::ExportOptions options;
    bool adx = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &a = args.at(i);
        if (a == u"--adx") {
            adx = true;
        } else if ((a == u"--band" || a == u"--mode") && i + 1 < args.size()) {
            (a == u"--band" ? options.band : options.mode) = args.at(++i);
        } else if (a.startsWith(QLatin1StringView("--band="))) {
            options.band = a.mid(7);
        } else if (a.startsWith(QLatin1StringView("--mode="))) {
            options.mode = a.mid(7);
        } else if (!a.startsWith(QLatin1StringView("--"))) {
            positional << a;
        } else {
            err << usage;
            return BadArguments;
        }
    }
    if (positional.size() != 2) {
        err << usage;
        return BadArguments;
    }
    const int list = listNumber(positional.at(0));
    if (list == 0) {
        err << "marvik-cli: not a list number (1..5): " << positional.at(0) << '\n';
        return BadArguments;
    }
    if (!options.band.isEmpty() && !logs::isBandName(options.band)) {
        err << "marvik-cli: not an ADIF band (20m, 2m, 70cm ...): " << options.band << '\n';
        return BadArguments;
    }
    if (!logs::isModeName(options.mode)) {
        err << "marvik-cli: not an ADIF mode: " << options.mode << '\n';
        return BadArguments;
    }
    const QString &file = positional.at(1);
    options.format = adx || file.endsWith(QLatin1StringView(".adx"), Qt::CaseInsensitive) ? logs::AdifFormat::Adx
                                                                                          : logs::AdifFormat::Adi;
    ListAtHand at(dataDir, list);
    if (!at.load(err))
        return WorkFailed;
    QString why;
    const int written = logs::exportAdifFile(at.model, file, options, &why);
    if (written < 0) {
        err << "marvik-cli: cannot write " << file << ": " << why << '\n';
        return WorkFailed;
    }
    out << written << " records written to " << file << '\n';
    return Success;
}

int refresh(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err)
{
    const QString usage = QStringLiteral("marvik-cli: usage: marvik-cli [--data-dir DIR] refresh LIST [--source SOURCE]\n");
    QString sourceName;
    QString listText;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &a = args.at(i);
        if (a == u"--source" && i + 1 < args.size() && sourceName.isEmpty()) {
            sourceName = args.at(++i);
        } else if (a.startsWith(QLatin1StringView("--source=")) && sourceName.isEmpty()) {
            sourceName = a.mid(9);
        } else if (listText.isEmpty() && !a.startsWith(QLatin1StringView("--"))) {
            listText = a;
        } else {
            err << usage;
            return BadArguments;
        }
    }
    const int list = listNumber(listText);
    if (list == 0) {
        err << usage;
        return BadArguments;
    }
    // The lookups' debug lines would mix with the progress a script reads.
    QLoggingCategory::setFilterRules(QStringLiteral("marvik.lookup.debug=false"));
    ListAtHand at(dataDir, list);
    std::optional<lookup::Source> source;
    if (!sourceName.isEmpty()) {
        source = lookup::sourceFromName(sourceName);
        if (!source) {
            err << "marvik-cli: unknown source: " << sourceName << ' ' << kSources << '\n';
            return BadArguments;
        }
    } else {
        source = lookup::sourceFromMenuIndex(at.settings.defaultDatabase);
        if (!source || !lookup::isOnline(*source)) {
            err << "marvik-cli: the default source is a CD callbook; give --source for an online one\n";
            return WorkFailed;
        }
    }
    if (!at.load(err))
        return WorkFailed;

    QNetworkAccessManager network;
    network.setCookieJar(new lookup::CookieJar(at.folder.path(), &network));
    logs::PageRefreshLookup page(&network, lookup::SourceSettings::load(), at.settings.ownCallsign, *source);
    logs::ListRefresh refresh(&at.model, at.path, [&page](const QString &call) { page.start(call); });
    page.connectTo(&refresh);
    const logs::RefreshSettings settings = logs::RefreshSettings::load();
    refresh.setIntervalMs(settings.intervalMs);
    refresh.setSkipDays(settings.skipDays);
    refresh.setOwnPosition(at.settings.me);
    refresh.setSortMode(at.settings.sortMode);
    refresh.setSourceName(page.sourceName());

    if (refresh.hasUnfinished()) {
        const QString after = refresh.resumesAfter();
        err << "marvik-cli: going on with the interrupted refresh of list " << list;
        if (!after.isEmpty())
            err << " after " << after;
        err << '\n';
    }
    int asked = 0;
    int updated = 0;
    QEventLoop loop;
    QObject::connect(&refresh, &logs::ListRefresh::progress, &loop,
                     [&](int n, int m, const QString &call, qint64 msLeft) {
                         ++asked;
                         err << "call " << n << " of " << m << ": " << call << " (about " << duration(msLeft)
                             << " left)\n";
                         err.flush();
                     });
    QObject::connect(&refresh, &logs::ListRefresh::rowWritten, &loop, [&] { ++updated; });
    QObject::connect(&refresh, &logs::ListRefresh::finished, &loop, &QEventLoop::quit);
    refresh.start();
    loop.exec();

    const logs::RefreshSummary &summary = refresh.summary();
    out << summaryText(summary) << '\n';
    if (summary.end == logs::RefreshEnd::WriteFailed)
        return WorkFailed;
    return asked > 0 && updated == 0 ? WorkFailed : Success;
}

} // namespace marvik::cli
