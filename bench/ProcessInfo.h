// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace marvik::bench {

/// The system-wide monotonic clock in nanoseconds: the same clock in every
/// process, so a child's moments can be set against its parent's.
qint64 monotonicNs();

/// The process's peak resident memory so far (VmHWM), in KiB; -1 when the
/// system does not say.
qint64 peakMemoryKiB();

/// The shared libraries mapped into this process whose file name starts
/// with `prefix` ("libQt6" gives "Core", "Gui", ...: the rest of the name
/// up to ".so").
QStringList mappedLibraries(const QString &prefix);

/// One line a child prints for its parent: "key=value" pairs.
QString reportLine(const QList<std::pair<QString, QString>> &figures);

} // namespace marvik::bench
