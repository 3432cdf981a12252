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
#include "core/lookup/services/CallbookLookup.h"
#include "core/lookup/services/CredentialStore.h"
#include "core/lookup/services/LookupCache.h"

#include <QEventLoop>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QNetworkAccessManager>

#include <memory>

namespace marvik::cli {

namespace {

/// The main window's lookup time-out.
constexpr int kLookupTimeoutMs = 12000;

/// The lookup's debug and info messages would mix with the one-line message
/// a script reads from stderr (the failures they tell are in that line);
/// QT_LOGGING_RULES still turns them on.
void quietLookupLog()
{
    QLoggingCategory::setFilterRules(QStringLiteral("marvik.lookup.debug=false\nmarvik.lookup.info=false"));
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
    if (!lookup::hasPageReader(*source)) {
        err << "marvik-cli: " << args.at(0) << " has no web pages to read; read-service reads its answers\n";
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

namespace {

constexpr char kSourceNames[] = "1..5, eham, qrz, qrzcq, callook, hamcall, hamqth";

/// The source a lookup names, or the default of Marvik.cfg.
std::optional<lookup::Source> chosenSource(const QString &name, const app::Settings &config, QTextStream &err,
                                           int &exitCode)
{
    if (!name.isEmpty()) {
        const std::optional<lookup::Source> source = lookup::sourceFromName(name);
        if (!source) {
            err << "marvik-cli: unknown source: " << name << " (" << kSourceNames << ")\n";
            exitCode = BadArguments;
        }
        return source;
    }
    const std::optional<lookup::Source> source = lookup::sourceFromMenuIndex(config.defaultDatabase);
    if (!source || !lookup::isOnline(*source)) {
        err << "marvik-cli: the default source is a CD callbook; give --source for an online one\n";
        exitCode = WorkFailed;
        return std::nullopt;
    }
    return source;
}

/// The first line of a password file, without its line end.
std::optional<QString> readPassword(const QString &path, QTextStream &err)
{
    QByteArray bytes;
    if (!readFile(path, bytes, err))
        return std::nullopt;
    const QString text = QString::fromUtf8(bytes);
    return text.section(u'\n', 0, 0).remove(u'\r');
}

QString lookupJson(const lookup::CallbookAnswer &a)
{
    QJsonObject o = QJsonDocument::fromJson(json(a.result).toUtf8()).object();
    o.insert(QStringLiteral("source"), lookup::sourceName(a.source));
    o.insert(QStringLiteral("via"), lookup::viaName(a.via));
    o.insert(QStringLiteral("cached"), a.cached);
    o.insert(QStringLiteral("cachedAt"), a.cached ? a.cachedAt.toString(Qt::ISODate) : QString());
    return QString::fromUtf8(QJsonDocument(o).toJson(QJsonDocument::Compact));
}

QString failureText(const lookup::SourceFailure &f)
{
    QString text = lookup::menuLabel(lookup::SourceSettings(), f.source) + u' ' + lookup::viaName(f.via) + u": "
        + lookup::failReasonText(f.reason);
    if (!f.detail.isEmpty())
        text += QStringLiteral(" (%1)").arg(QString(f.detail).replace(u'\n', u' '));
    return text;
}

/// The lookup cache in the data folder, with the limits of the settings.
std::unique_ptr<lookup::LookupCache> openCache(const app::DataFolder &folder, const lookup::SourceSettings &settings,
                                               QTextStream &err)
{
    auto cache = std::make_unique<lookup::LookupCache>(folder.filePath(lookup::LookupCache::fileName()));
    cache->setFreshDays(settings.cacheFreshDays());
    cache->setMaxEntries(settings.cacheMaxEntries());
    if (!cache->setAsidePath().isEmpty())
        err << "marvik-cli: the lookup cache was damaged and has been set aside as " << cache->setAsidePath() << '\n';
    return cache;
}

} // namespace

int lookup(const QStringList &args, const QString &dataDir, QTextStream &out, QTextStream &err)
{
    const QString usage = QStringLiteral(
        "marvik-cli: usage: marvik-cli [--data-dir DIR] lookup [--source SOURCE] [--via page|service] [--fallback] "
        "[--offline] [--user USER --password-file FILE] CALLSIGN\n");
    QString sourceName;
    QString viaText;
    QString user;
    QString passwordFile;
    QString typed;
    bool fallback = false;
    bool offline = false;
    const auto option = [&](qsizetype &i, const QString &name, QString &value) {
        const QString &a = args.at(i);
        if (a == name && i + 1 < args.size() && value.isEmpty()) {
            value = args.at(++i);
            return true;
        }
        if (a.startsWith(name + u'=') && value.isEmpty()) {
            value = a.mid(name.size() + 1);
            return true;
        }
        return false;
    };
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &a = args.at(i);
        if (option(i, QStringLiteral("--source"), sourceName) || option(i, QStringLiteral("--via"), viaText)
            || option(i, QStringLiteral("--user"), user) || option(i, QStringLiteral("--password-file"), passwordFile))
            continue;
        if (a == u"--fallback") {
            fallback = true;
        } else if (a == u"--offline") {
            offline = true;
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
    int exitCode = Success;
    const std::optional<lookup::Source> source = chosenSource(sourceName, config, err, exitCode);
    if (!source)
        return exitCode;

    lookup::LookupOptions options;
    options.fallback = fallback;
    options.cacheWhenFailing = fallback;
    options.offline = offline;
    if (!viaText.isEmpty()) {
        options.via = lookup::viaFromName(viaText);
        const bool served = options.via && (*options.via == lookup::Via::Page ? lookup::hasPageReader(*source)
                                                                              : lookup::hasDataService(*source));
        if (!served) {
            err << "marvik-cli: " << lookup::sourceName(*source) << " cannot be read by " << viaText
                << " (page or service as the source offers)\n";
            return BadArguments;
        }
    }

    lookup::SourceSettings settings = lookup::SourceSettings::load();
    lookup::CredentialStore credentials;
    if (!user.isEmpty())
        settings.setUserName(*source, user);
    if (!passwordFile.isEmpty()) {
        if (settings.userName(*source).isEmpty()) {
            err << "marvik-cli: --password-file needs a user name (--user, or one set up for the source)\n";
            return BadArguments;
        }
        const std::optional<QString> password = readPassword(passwordFile, err);
        if (!password)
            return WorkFailed;
        // For this run only: a script's password never reaches the keyring.
        credentials.keepForThisRun(*source, settings.userName(*source), *password);
    }

    const app::DataFolder folder(dataDir);
    QNetworkAccessManager network;
    auto *jar = new lookup::CookieJar(folder.path(), &network);
    network.setCookieJar(jar);
    const std::unique_ptr<lookup::LookupCache> cache = openCache(folder, settings, err);
    lookup::CallbookLookup callbooks(&network, &credentials, cache.get());
    callbooks.setSettings(settings);
    callbooks.setOwnCallsign(config.ownCallsign);
    const auto tried = callbooks.plan(*source, options);
    callbooks.setSourceTimeout(kLookupTimeoutMs);
    callbooks.setDeadline(kLookupTimeoutMs * std::max<int>(1, int(tried.size())));

    QEventLoop loop;
    std::optional<lookup::CallbookAnswer> answer;
    QList<lookup::SourceFailure> failures;
    QObject::connect(&callbooks, &lookup::CallbookLookup::answered, &loop, [&](const lookup::CallbookAnswer &a) {
        answer = a;
        loop.quit();
    });
    QObject::connect(&callbooks, &lookup::CallbookLookup::failed, &loop,
                     [&](const QString &, const QList<lookup::SourceFailure> &f) {
                         failures = f;
                         loop.quit();
                     });
    callbooks.lookUp(call, *source, options);
    loop.exec();
    if (answer) {
        out << lookupJson(*answer) << '\n';
        return Success;
    }
    // A page that was read tells what it said, as it always did; anything
    // else is a failed lookup.
    if (failures.size() == 1 && failures.first().via == lookup::Via::Page
        && failures.first().result.outcome != lookup::LookupOutcome::Found
        && (failures.first().reason == lookup::FailReason::NotFound
            || failures.first().reason == lookup::FailReason::LoginRequired
            || failures.first().reason == lookup::FailReason::Unreadable)) {
        lookup::CallbookAnswer a;
        a.result = failures.first().result;
        a.source = failures.first().source;
        out << lookupJson(a) << '\n';
        return Success;
    }
    QStringList why;
    for (const lookup::SourceFailure &f : std::as_const(failures))
        why.append(failureText(f));
    if (why.isEmpty())
        why.append(offline ? QStringLiteral("not in the lookup cache") : QStringLiteral("no source to ask"));
    err << "marvik-cli: " << call << " not looked up: " << why.join(QStringLiteral("; ")) << '\n';
    return WorkFailed;
}

int readService(const QStringList &args, const QString &, QTextStream &out, QTextStream &err)
{
    const std::optional<lookup::Source> source = lookup::sourceFromName(args.at(0));
    if (!source || !lookup::hasDataService(*source)) {
        err << "marvik-cli: unknown data service: " << args.at(0) << " (qrz, hamqth, qrzcq, callook)\n";
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
    const lookup::ServiceAnswer a = lookup::parseServiceAnswer(*source, bytes);
    lookup::LookupResult r = a.result;
    QString event = lookup::serviceEventName(a.error);
    QString message = a.message;
    if (a.error == lookup::ServiceError::None && !a.record) {
        event = lookup::outcomeName(lookup::LookupOutcome::ReaderError);
        message = QStringLiteral("a log-in answer; it holds no record");
    } else if (a.record && a.callsign.compare(call, Qt::CaseInsensitive) != 0) {
        // As a saved page that does not mention the call.
        r = lookup::LookupResult();
        event = lookup::outcomeName(lookup::LookupOutcome::PageNotFound);
        message = QStringLiteral("the answer is for %1").arg(a.callsign);
    }
    QJsonObject o = QJsonDocument::fromJson(json(r).toUtf8()).object();
    o.insert(QStringLiteral("event"), event);
    out << QString::fromUtf8(QJsonDocument(o).toJson(QJsonDocument::Compact)) << '\n';
    if (event == u"GotPage")
        return Success;
    err << "marvik-cli: " << lookup::menuLabel(lookup::SourceSettings(), *source) << ": "
        << QString(message).replace(u'\n', u' ') << '\n';
    return WorkFailed;
}

int clearCache(const QStringList &, const QString &dataDir, QTextStream &out, QTextStream &err)
{
    quietLookupLog();
    const app::DataFolder folder(dataDir);
    const std::unique_ptr<lookup::LookupCache> cache = openCache(folder, lookup::SourceSettings::load(), err);
    const int count = cache->count();
    if (!cache->clear()) {
        err << "marvik-cli: the lookup cache cannot be cleared: " << cache->errorString() << '\n';
        return WorkFailed;
    }
    out << count << '\n';
    return Success;
}

} // namespace marvik::cli
