// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/LookupCommands.h"

#include "cli/CliCommands.h"
#include "core/app/Callsign.h"
#include "core/app/Config.h"
#include "core/app/DataFolder.h"
#include "core/lookup/CookieJar.h"
#include "core/lookup/HtmlText.h"
#include "core/lookup/LookUp.h"
#include "core/lookup/LookupResult.h"

#include <QEventLoop>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QNetworkAccessManager>
#include <QTimer>

namespace marvik::cli {

namespace {

/// The main window's lookup time-out.
constexpr int kLookupTimeoutMs = 12000;

/// The lookup's debug messages would mix with the one-line message a script
/// reads from stderr; QT_LOGGING_RULES still turns them on.
void quietLookupLog()
{
    QLoggingCategory::setFilterRules(QStringLiteral("marvik.lookup.debug=false"));
}

bool readFile(const QString &path, QByteArray &bytes, QTextStream &err)
{
    quietLookupLog();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        err << "marvik-cli: cannot read " << path << ": " << file.errorString() << '\n';
        return false;
    }
    bytes = file.readAll();
    return true;
}

QString json(const lookup::LookupResult &r)
{
    QJsonObject o;
    o.insert(QStringLiteral("event"), lookup::outcomeName(r.outcome));
    o.insert(QStringLiteral("name"), r.name);
    o.insert(QStringLiteral("add1"), r.address1);
    o.insert(QStringLiteral("add2"), r.address2);
    o.insert(QStringLiteral("country"), r.country);
    o.insert(QStringLiteral("class"), r.licenceClass);
    o.insert(QStringLiteral("prevcall"), r.previousCall);
    o.insert(QStringLiteral("dateofbirth"), r.dateOfBirth);
    o.insert(QStringLiteral("locator"), r.locator);
    o.insert(QStringLiteral("webpage"), r.webPage);
    o.insert(QStringLiteral("latitude"), r.latitude);
    o.insert(QStringLiteral("longitude"), r.longitude);
    return QString::fromUtf8(QJsonDocument(o).toJson(QJsonDocument::Compact));
}

/// The own callsign kept in Marvik.cfg: a QRZ page showing it means "logged in".
app::Settings configuration(const QString &dataDir)
{
    app::Settings settings;
    app::readConfig(app::DataFolder(dataDir).configFile(), settings);
    return settings;
}

} // namespace

int html2text(const QStringList &args, const QString &, QTextStream &out, QTextStream &err)
{
    QByteArray bytes;
    if (!readFile(args.at(0), bytes, err))
        return WorkFailed;
    out << lookup::htmlDecode(lookup::decodePage(bytes));
    return Success;
}

int readPage(const QStringList &args, const QString &, QTextStream &out, QTextStream &err)
{
    const std::optional<lookup::Source> source = lookup::sourceFromName(args.at(0));
    if (!source) {
        err << "marvik-cli: unknown source: " << args.at(0) << " (1..5, eham, qrz, qrzcq, callook, hamcall)\n";
        return BadArguments;
    }
    const QString call = callsign::forLookup(args.at(1));
    if (call.isEmpty()) {
        err << "marvik-cli: no callsign given\n";
        return BadArguments;
    }
    QByteArray bytes;
    if (!readFile(args.at(2), bytes, err))
        return WorkFailed;
    QNetworkAccessManager unused;
    lookup::LookUp lookUp(&unused, lookup::SourceSettings::load(), QString());
    lookUp.setDataBase(lookup::dataBaseOf(*source));
    lookUp.setHtml(lookup::htmlDecode(lookup::decodePage(bytes)));
    out << json(lookup::readPage(lookUp, call)) << '\n';
    return Success;
}

int lookup(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err)
{
    const QString usage = QStringLiteral("marvik-cli: usage: marvik-cli [--data-dir DIR] lookup [--source SOURCE] CALLSIGN\n");
    QString sourceName;
    QString typed;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &a = args.at(i);
        if (a == u"--source" && i + 1 < args.size() && sourceName.isEmpty()) {
            sourceName = args.at(++i);
        } else if (a.startsWith(QStringLiteral("--source=")) && sourceName.isEmpty()) {
            sourceName = a.mid(9);
        } else if (typed.isEmpty() && !a.startsWith(QStringLiteral("--"))) {
            typed = a;
        } else {
            err << usage;
            return BadArguments;
        }
    }
    quietLookupLog();
    const QString call = callsign::forLookup(typed);
    if (call.isEmpty()) {
        err << usage;
        return BadArguments;
    }
    const app::Settings config = configuration(dataDir);
    std::optional<lookup::Source> source;
    if (!sourceName.isEmpty()) {
        source = lookup::sourceFromName(sourceName);
        if (!source) {
            err << "marvik-cli: unknown source: " << sourceName << " (1..5, eham, qrz, qrzcq, callook, hamcall)\n";
            return BadArguments;
        }
    } else {
        source = lookup::sourceFromMenuIndex(config.defaultDatabase);
        if (!source || !lookup::isOnline(*source)) {
            err << "marvik-cli: the default source is a CD callbook; give --source for an online one\n";
            return WorkFailed;
        }
    }

    const app::DataFolder folder(dataDir);
    QNetworkAccessManager network;
    auto *jar = new lookup::CookieJar(folder.path(), &network);
    network.setCookieJar(jar);
    lookup::LookUp lookUp(&network, lookup::SourceSettings::load(), config.ownCallsign);
    lookUp.setDataBase(lookup::dataBaseOf(*source));

    QEventLoop loop;
    QString failure;
    lookup::LookupResult result;
    bool answered = false;
    QObject::connect(&lookUp, &lookup::LookUp::GotPage, &loop, [&](const QString &subject) {
        result = lookup::readLookupResult(lookUp, subject, true);
        answered = true;
        loop.quit();
    });
    QObject::connect(&lookUp, &lookup::LookUp::PageNotFound, &loop, [&] {
        result.outcome = lookup::LookupOutcome::PageNotFound;
        answered = true;
        loop.quit();
    });
    QObject::connect(&lookUp, &lookup::LookUp::requestFailed, &loop, [&](const QString &, const QString &reason) {
        failure = reason;
        loop.quit();
    });
    QTimer::singleShot(kLookupTimeoutMs, &loop, [&] {
        failure = QStringLiteral("no answer within %1 s").arg(kLookupTimeoutMs / 1000);
        loop.quit();
    });
    lookUp.GetPage(call + u'2');
    if (lookUp.pendingRequests().isEmpty()) {
        err << "marvik-cli: the address of source " << lookup::dataBaseOf(*source) << " is not a web address\n";
        return WorkFailed;
    }
    loop.exec();
    if (!answered) {
        err << "marvik-cli: " << call << " not looked up: " << failure << '\n';
        return WorkFailed;
    }
    out << json(result) << '\n';
    return Success;
}

} // namespace marvik::cli
