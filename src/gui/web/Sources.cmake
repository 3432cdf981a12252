# SPDX-License-Identifier: GPL-3.0-or-later
# The program's side of the web module: loading it, and a view host.
target_sources(marvik_gui PRIVATE
  web/WebModule.h
  web/WebView.cpp web/WebView.h)
