// What dmx_subsystem's conversions did with a script's values: numbers the engine clamps to the
// signal format, too many bytes, and calls on a handle without the engine's DMX subsystem.
#include "KestDMXCheckCall.h"

#include "host/VorlithLua.h"

namespace
{
	// The largest value of a format ("E8Bit" .. "E32Bit") and its width in bits.
	unsigned long long GetFormatMax(const std::string& Format, int& OutBits)
	{
		OutBits = Format == "E16Bit" ? 16 : Format == "E24Bit" ? 24 : Format == "E32Bit" ? 32 : 8;
		return (1ull << OutBits) - 1;
	}

	void CheckWholeNumber(FKestCheckCall& Call, const std::vector<FKestAsked>& Arguments)
	{
		if (Arguments.size() < 2 || !Arguments[0].Given.is_number_integer())
		{
			return;
		}
		const FKestAsked& Value = Arguments[0];
		const long long Given = Value.Given.get<long long>();
		const uint32_t Bits32 = static_cast<uint32_t>(Given);
		int Bits = 8;
		const unsigned long long Max = GetFormatMax(Arguments[1].Used.is_string() ? Arguments[1].Used.get<std::string>() : std::string("E8Bit"), Bits);
		std::string Why;
		if (Given < INT32_MIN || Given > INT32_MAX)
		{
			Why = std::to_string(Given) + " does not fit in 32 bits, so its low 32 bits " + std::to_string(static_cast<int32_t>(Bits32)) + " were converted";
		}
		if (Bits32 > Max)
		{
			Why += (Why.empty() ? std::to_string(Given) : std::string(", which")) + (Given < 0 ? " is negative and" : "") + " does not fit in " + std::to_string(Bits)
				+ " bits, so the bytes hold " + std::to_string(Max);
		}
		if (!Why.empty())
		{
			Call.Report("clamped", Value.Path, Value.Path + ": " + Why, Value.Given, Bits32 > Max ? Max : static_cast<unsigned long long>(Bits32));
		}
	}

	void CheckNormalizedValue(FKestCheckCall& Call, const std::vector<FKestAsked>& Arguments)
	{
		if (Arguments.empty() || !Arguments[0].Given.is_number())
		{
			return;
		}
		const FKestAsked& Value = Arguments[0];
		const double Given = Value.Given.get<double>();
		if (Given < 0.0 || Given > 1.0)
		{
			const double Used = Given < 0.0 ? 0.0 : 1.0;
			Call.Report("clamped", Value.Path, Value.Path + ": " + FormatCheckNumber(Given) + " is outside 0..1, so " + FormatCheckNumber(Used) + " was converted",
				Value.Given, Used);
		}
	}

	void CheckByteCount(FKestCheckCall& Call, const std::vector<FKestAsked>& Arguments)
	{
		if (Arguments.empty() || Arguments[0].Entries.size() <= 4)
		{
			return;
		}
		Call.Report("ignored", Arguments[0].Path, Arguments[0].Path + ": " + std::to_string(Arguments[0].Entries.size())
			+ " bytes given, but a value has at most 4, so only the first 4 were used");
	}
}

void CheckSubsystemOpened(FKestCheckCall& Call, bool bValid)
{
	if (!bValid)
	{
		Call.Report("not-found", "", "the engine has no DMX subsystem, so the handle is not valid: int_to_bytes still converts, "
			"bytes_to_int answers 0, bytes_to_normalized 0.0 and normalized_to_bytes {}");
	}
}

void CheckSubsystemMethod(FKestCheckCall& Call, const FKestCheckHandle& Handle, const std::string& Method, const std::vector<FKestAsked>& Arguments,
	const FKestCallResults& Results)
{
	if (Method == "int_to_bytes")
	{
		CheckWholeNumber(Call, Arguments);
		return;
	}
	if (!Handle.bValid)
	{
		const char* Answer = Method == "bytes_to_int" ? "0" : Method == "bytes_to_normalized" ? "0.0" : "{}";
		Call.Findings.clear();
		Call.Report("invalid-handle", "", "dmx_subsystem() found no DMX subsystem, so " + Method + " answered " + Answer + " without converting");
		return;
	}
	if (Method == "normalized_to_bytes")
	{
		CheckNormalizedValue(Call, Arguments);
	}
	else
	{
		CheckByteCount(Call, Arguments);
	}
}
