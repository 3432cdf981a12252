target_sources(marvik_core PRIVATE
  app/Callsign.cpp app/Callsign.h
  app/Config.cpp app/Config.h
  app/DataFolder.cpp app/DataFolder.h
  app/Log.cpp app/Log.h
  app/Number.cpp app/Number.h
  app/Placement.cpp app/Placement.h
  app/Session.cpp app/Session.h
  app/TextCodec.cpp app/TextCodec.h
  app/TextFile.cpp app/TextFile.h)
# The line count of list files and the search for the code page's 32 odd
# bytes are loops GCC vectorizes at -O2 only with a cost model that allows a
# remainder loop (clang does by default).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  set_source_files_properties(app/TextFile.cpp app/TextCodec.cpp PROPERTIES COMPILE_OPTIONS "-fvect-cost-model=dynamic")
endif()
