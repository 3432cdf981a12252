// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/HtmlText.h"

#include <QHash>
#include <QObject>
#include <QThreadPool>

#include <memory>

namespace marvik::lookup {

/// How long turning one page into text may take: an ordinary page takes a
/// few milliseconds, the largest page allowed well under a second.
inline constexpr int kDefaultDecodeDeadlineMs = 5000;

/// Turns fetched page bytes into text on threads of its own, so a large or
/// hostile page never holds up the thread that asked. Each page gets a
/// deadline counted from when it was handed over; past it the page fails
/// and its thread stops work on it. Results come back on the thread this
/// object lives on.
class PageDecoder : public QObject
{
    Q_OBJECT

public:
    explicit PageDecoder(QObject *parent = nullptr);
    /// Stops every decoding still running and waits for its thread.
    ~PageDecoder() override;

    /// Starts decoding; the returned number names the job in the signals.
    quint64 decode(const QByteArray &bytes, const QByteArray &contentType);
    /// Drops a job: it reports nothing, and its thread stops soon.
    void cancel(quint64 job);

    void setDeadline(int milliseconds) { m_deadline = milliseconds; }
    int deadline() const { return m_deadline; }

signals:
    void decoded(quint64 job, const QString &text);
    /// The page could not be read in time or is too complex to read.
    void failed(quint64 job, const QString &reason);

private:
    struct Job;

    void finish(quint64 job, const DecodedPage &page);

    QThreadPool m_pool;
    QHash<quint64, std::shared_ptr<Job>> m_jobs;
    quint64 m_next = 0;
    int m_deadline = kDefaultDecodeDeadlineMs;
};

} // namespace marvik::lookup
