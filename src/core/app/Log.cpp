// SPDX-License-Identifier: GPL-3.0-or-later
#include "Log.h"

namespace marvik {
Q_LOGGING_CATEGORY(lcApp, "marvik.app")
Q_LOGGING_CATEGORY(lcLists, "marvik.lists")
Q_LOGGING_CATEGORY(lcLookup, "marvik.lookup")
Q_LOGGING_CATEGORY(lcMaps, "marvik.maps")
Q_LOGGING_CATEGORY(lcShare, "marvik.share")
Q_LOGGING_CATEGORY(lcI18n, "marvik.i18n")
} // namespace marvik
