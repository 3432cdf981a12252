// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/PageDecoder.h"

#include "core/app/Log.h"

#include <QDeadlineTimer>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>

namespace marvik::lookup {

struct PageDecoder::Job
{
    std::atomic<bool> cancelled{false};
    int deadline = 0; ///< milliseconds, for the reason given
};

namespace {

QString outOfTime(int milliseconds)
{
    return QStringLiteral("page too complex: not read within %1 s").arg(milliseconds / 1000.0);
}

} // namespace

PageDecoder::PageDecoder(QObject *parent)
    : QObject(parent)
{
    // A page held up until its deadline must not hold up the next ones for
    // long on a machine of few cores.
    m_pool.setMaxThreadCount(std::max(4, QThread::idealThreadCount()));
}

PageDecoder::~PageDecoder()
{
    for (const std::shared_ptr<Job> &job : std::as_const(m_jobs))
        job->cancelled = true;
    m_pool.waitForDone();
}

quint64 PageDecoder::decode(const QByteArray &bytes, const QByteArray &contentType)
{
    const quint64 id = ++m_next;
    auto job = std::make_shared<Job>();
    job->deadline = m_deadline;
    m_jobs.insert(id, job);
    const int deadline = m_deadline;
    const QDeadlineTimer due(deadline);
    m_pool.start([this, id, job, due, bytes, contentType] {
        const DecodedPage page = decodePageText(bytes, contentType, {due, &job->cancelled});
        if (job->cancelled)
            return;
        QMetaObject::invokeMethod(this, [this, id, page] { finish(id, page); }, Qt::QueuedConnection);
    });
    // The worker stops itself at the deadline, but the answer must not
    // depend on it: a thread held up elsewhere still ends the page in time.
    QTimer::singleShot(deadline, this, [this, id, deadline] {
        const std::shared_ptr<Job> late = m_jobs.take(id);
        if (!late)
            return;
        late->cancelled = true;
        qCDebug(lcLookup) << "page" << id << "not read within" << deadline << "ms";
        emit failed(id, outOfTime(deadline));
    });
    return id;
}

void PageDecoder::cancel(quint64 job)
{
    if (const std::shared_ptr<Job> dropped = m_jobs.take(job))
        dropped->cancelled = true;
}

void PageDecoder::finish(quint64 job, const DecodedPage &page)
{
    const std::shared_ptr<Job> done = m_jobs.take(job);
    if (!done)
        return; // cancelled, or already failed at its deadline
    switch (page.error) {
    case PageTextError::None:
        emit decoded(job, page.text);
        break;
    case PageTextError::TooComplex:
        emit failed(job, QStringLiteral("page too complex to read"));
        break;
    case PageTextError::OutOfTime:
    case PageTextError::Cancelled:
        emit failed(job, outOfTime(done->deadline));
        break;
    }
}

} // namespace marvik::lookup
