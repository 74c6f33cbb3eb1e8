// Its precompiled headers are those of all test programs.
