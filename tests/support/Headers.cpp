// The source of the precompiled headers of all test programs.
