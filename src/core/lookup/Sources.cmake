target_sources(marvik_core PRIVATE)
