# SPDX-License-Identifier: GPL-3.0-or-later
# One interface target carries the language level, warnings and sanitizers to
# every Marvik target, so no target can quietly build with weaker settings.
add_library(marvik_options INTERFACE)
target_compile_features(marvik_options INTERFACE cxx_std_20)
target_compile_definitions(marvik_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
  QT_USE_QSTRINGBUILDER QT_NO_FOREACH)
target_compile_options(marvik_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow
  -Wnon-virtual-dtor -Wold-style-cast -Wcast-align -Woverloaded-virtual -Wformat=2)
if(MARVIK_WERROR)
  target_compile_options(marvik_options INTERFACE -Werror)
endif()
if(ENABLE_SANITIZERS)
  target_compile_options(marvik_options INTERFACE -fsanitize=address,undefined
    -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  target_link_options(marvik_options INTERFACE -fsanitize=address,undefined)
endif()
if(MARVIK_FUZZ)
  # Coverage feedback for libFuzzer in all of Marvik's code, not just the targets.
  target_compile_options(marvik_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
