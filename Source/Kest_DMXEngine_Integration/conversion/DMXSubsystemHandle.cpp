#include "conversion/DMXSubsystemHandle.h"

#include "conversion/DMXByteTables.h"
#include "DMXProtocolTypes.h"
#include "DMXSubsystem.h"
#include "Engine/Engine.h"
#include "library/DMXFixtureModeParams.h"
#include "module/DMXLuaParams.h"

namespace
{
	// The script's data-type word; anything unrecognised converts as 8 bit.
	EDMXFixtureSignalFormat ParseDataTypeParam(const std::string& DataType)
	{
		return ParseSignalFormat(ConvertLuaText(DataType), EDMXFixtureSignalFormat::E8Bit);
	}
}

sol::object OpenDMXSubsystemHandle(sol::this_state S)
{
	// Only the engine-wide subsystem: conversions must not depend on the world or level that is open.
	UDMXSubsystem* Subsystem = GEngine ? GEngine->GetEngineSubsystem<UDMXSubsystem>() : nullptr;

	sol::state_view Lua(S);
	sol::table Handle = Lua.create_table();
	Handle["valid"] = Subsystem != nullptr;

	// The engine's whole-number conversion is static, so this one works without the subsystem.
	Handle.set_function("int_to_bytes", [](sol::table Self, int32 Value, const std::string& DataType, bool bUseLSB, sol::this_state CallState) -> sol::object
	{
		const EDMXFixtureSignalFormat SignalFormat = ParseDataTypeParam(DataType);
		TArray<uint8> Bytes;
		UDMXSubsystem::IntValueToBytes(Value, SignalFormat, Bytes, bUseLSB);
		return MakeDMXByteTable(CallState, Bytes);
	});

	Handle.set_function("bytes_to_int", [Subsystem](sol::table Self, sol::table Bytes, bool bUseLSB) -> int32
	{
		if (Subsystem == nullptr)
		{
			return 0;
		}
		return Subsystem->BytesToInt(ReadDMXByteTable(Bytes), bUseLSB);
	});

	Handle.set_function("normalized_to_bytes", [Subsystem](sol::table Self, float Value, const std::string& DataType, bool bUseLSB, sol::this_state CallState) -> sol::object
	{
		TArray<uint8> Bytes;
		if (Subsystem != nullptr)
		{
			const EDMXFixtureSignalFormat SignalFormat = ParseDataTypeParam(DataType);
			Subsystem->NormalizedValueToBytes(Value, SignalFormat, Bytes, bUseLSB);
		}
		return MakeDMXByteTable(CallState, Bytes);
	});

	Handle.set_function("bytes_to_normalized", [Subsystem](sol::table Self, sol::table Bytes, bool bUseLSB) -> double
	{
		if (Subsystem == nullptr)
		{
			return 0.0;
		}
		return static_cast<double>(Subsystem->BytesToNormalizedValue(ReadDMXByteTable(Bytes), bUseLSB));
	});

	return Handle;
}
