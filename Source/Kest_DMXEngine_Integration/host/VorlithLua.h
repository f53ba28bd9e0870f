// Host module VorlithAI: the Lua interpreter and sol2, as the host builds them (argument checks on).
// sol2 has functions named check and verify, which the engine defines as macros: hide the macros
// while sol2 is read.
#pragma once

#pragma push_macro("check")
#pragma push_macro("verify")
#undef check
#undef verify
#include <sol/sol.hpp>
#pragma pop_macro("verify")
#pragma pop_macro("check")
