# SPDX-License-Identifier: GPL-3.0-or-later
# Callbook data services: answer parsers, clients, the lookup cache, the
# keyring and the lookup that falls back from one source to the next.
target_sources(marvik_core PRIVATE
  lookup/services/CallbookLookup.cpp lookup/services/CallbookLookup.h
  lookup/services/CallookAnswer.cpp
  lookup/services/CredentialStore.cpp lookup/services/CredentialStore.h
  lookup/services/HamQthAnswer.cpp
  lookup/services/LookupCache.cpp lookup/services/LookupCache.h
  lookup/services/QrzAnswer.cpp
  lookup/services/ServiceAnswer.cpp lookup/services/ServiceAnswer.h
  lookup/services/ServiceClient.cpp lookup/services/ServiceClient.h
  lookup/services/XmlAnswer.cpp lookup/services/XmlAnswer.h)
# The lookup cache is a SQLite database; the passwords go to the desktop
# keyring. Neither is seen outside marvik_core.
target_link_libraries(marvik_core PRIVATE Qt6::Sql Qt6Keychain::Qt6Keychain)
