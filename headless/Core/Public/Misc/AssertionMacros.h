// check/ensure as the engine uses them. check() aborts; ensure() reports once per call site
// through the headless engine's log and lets the caller carry on, as in a shipping editor.
#pragma once

#include <cstdlib>

namespace UE::Headless
{
	void ReportEnsure(const char* Expression, const char* File, int Line);
	[[noreturn]] void ReportCheckFailure(const char* Expression, const char* File, int Line);
}

#define check(expr) do { if (!(expr)) { ::UE::Headless::ReportCheckFailure(#expr, __FILE__, __LINE__); } } while (0)
#define checkf(expr, ...) check(expr)
#define ensure(expr) ((expr) ? true : (::UE::Headless::ReportEnsure(#expr, __FILE__, __LINE__), false))
#define ensureMsgf(expr, ...) ensure(expr)
#define ensureAlways(expr) ensure(expr)
#define ensureAlwaysMsgf(expr, ...) ensure(expr)
