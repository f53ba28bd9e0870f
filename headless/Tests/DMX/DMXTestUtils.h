// Shared set-up of the DMX runtime tests: a library in a package, fixture type and patch helpers.
#pragma once

#include <gtest/gtest.h>
#include "CoreMinimal.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "UObject/HeadlessObjectRegistry.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

namespace DMXRuntimeTests
{
	using EFormat = EDMXFixtureSignalFormat;

	class FDMXTestBase : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			Package = CreatePackage(TEXT("/Game/DMXTest"));
			Library = NewObject<UDMXLibrary>(Package, FName(TEXT("DMXTest")), RF_Public | RF_Transactional);
		}
		void TearDown() override { FHeadlessObjectRegistry::Get().DestroyAll(); }

		static FDMXFixtureFunction MakeFunction(const TCHAR* Attribute, int32 Channel, EFormat DataType = EFormat::E8Bit, int64 DefaultValue = 0)
		{
			FDMXFixtureFunction Function;
			Function.Attribute = FName(Attribute);
			Function.FunctionName = Attribute;
			Function.Channel = Channel;
			Function.DataType = DataType;
			Function.DefaultValue = DefaultValue;
			return Function;
		}

		// A fixture type with one mode "Mode" holding the functions as given (not aligned), span updated.
		UDMXEntityFixtureType* CreateFixtureType(const TCHAR* Name, TArray<FDMXFixtureFunction> Functions = {})
		{
			FDMXEntityFixtureTypeConstructionParams Params;
			Params.ParentDMXLibrary = Library;
			FDMXFixtureMode Mode;
			Mode.ModeName = TEXT("Mode");
			Mode.Functions = Functions;
			Params.Modes.Add(Mode);
			UDMXEntityFixtureType* FixtureType = UDMXEntityFixtureType::CreateFixtureTypeInLibrary(Params, Name);
			FixtureType->UpdateChannelSpan(0);
			return FixtureType;
		}

		UDMXEntityFixturePatch* CreatePatch(UDMXEntityFixtureType* FixtureType, const TCHAR* Name = TEXT(""), int32 StartingAddress = 1, int32 ActiveMode = 0)
		{
			FDMXEntityFixturePatchConstructionParams Params;
			Params.FixtureTypeRef = FDMXEntityFixtureTypeRef(FixtureType);
			Params.StartingAddress = StartingAddress;
			Params.ActiveMode = ActiveMode;
			return UDMXEntityFixturePatch::CreateFixturePatchInLibrary(Params, Name);
		}

		static TArray<int32> GetChannels(const FDMXFixtureMode& Mode)
		{
			TArray<int32> Channels;
			for (const FDMXFixtureFunction& Function : Mode.Functions)
			{
				Channels.Add(Function.Channel);
			}
			return Channels;
		}

		UPackage* Package = nullptr;
		UDMXLibrary* Library = nullptr;
	};
} // namespace DMXRuntimeTests
