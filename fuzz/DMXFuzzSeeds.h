// The checked-in seed corpus and dictionary of kest_fuzz, written by the program itself so that they
// always match the byte format of DMXFuzzFormat.h.
#pragma once

// Writes one file per seed into Directory (which must exist); false when a file cannot be written.
bool WriteKestFuzzSeedCorpus(const char* Directory);
// Writes the libFuzzer dictionary (fuzz/dmx.dict) to Path.
bool WriteKestFuzzDictionary(const char* Path);
