// SPDX-License-Identifier: GPL-3.0-or-later
// Arbitrary bytes as an answer of the QRZCQ data service.
#include "ServiceAnswerFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    return fuzzServiceAnswer(marvik::lookup::Source::QrzCq, data, size);
}
