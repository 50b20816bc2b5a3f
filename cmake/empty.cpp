// The shared library is made of whole layer archives; this unit only gives it a source.
