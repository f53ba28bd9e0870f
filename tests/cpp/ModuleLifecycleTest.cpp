#include <gtest/gtest.h>

#include "HeadlessEditor.h"
#include "Modules/ModuleManager.h"
#include "VorlithHostRecorder.h"
#include "VorlithLuaSession.h"

extern "C" void ThisIsAnUnrealEngineModule();

namespace
{
	const TCHAR* const ModuleName = TEXT("Kest_DMXEngine_Integration");

	class FModuleLifecycleTest : public ::testing::Test
	{
	protected:
		void SetUp() override { Editor = std::make_unique<FHeadlessEditor>(); }
		void TearDown() override { Editor.reset(); }

		FVorlithHostRecorder& Host() { return FVorlithHostRecorder::Get(); }
		std::unique_ptr<FHeadlessEditor> Editor;
	};
}

TEST_F(FModuleLifecycleTest, StartupRegistersTheExtensionThenTheBinding)
{
	ASSERT_NE(FModuleInitializerEntry::FindModule(ModuleName), nullptr);
	EXPECT_NE(&ThisIsAnUnrealEngineModule, nullptr);
	ASSERT_TRUE(Editor->LoadModule(ModuleName));

	ASSERT_EQ(Host().Events.Num(), 2);
	EXPECT_EQ(Host().Events[0], FString(TEXT("RegisterExtension vorlith.dmx_engine")));
	EXPECT_EQ(Host().Events[1], FString(TEXT("RegisterOwned vorlith.dmx_engine DMXEngine")));

	ASSERT_EQ(Host().Extensions.Num(), 1);
	const FVorlithExtensionDescriptor& Descriptor = Host().Extensions[0];
	EXPECT_TRUE(Descriptor.Id.Equals(FString(TEXT("vorlith.dmx_engine"))));
	EXPECT_TRUE(Descriptor.DisplayName.Equals(FString(TEXT("DMX Engine"))));
	EXPECT_TRUE(Descriptor.ModuleName.Equals(FString(TEXT("Kest_DMXEngine_Integration"))));
	EXPECT_FALSE(Descriptor.Author.IsEmpty());
	EXPECT_TRUE(Descriptor.Version.Equals(FString(TEXT("0.1.0"))));
	EXPECT_TRUE(Descriptor.Keyword.Equals(FString(TEXT("dmx"))));
	EXPECT_TRUE(Descriptor.Description.Equals(FString(TEXT("Author DMX Library fixture types and fixture patches from Lua."))));
	EXPECT_FALSE(Descriptor.bExperimental);
	EXPECT_FALSE(Descriptor.bRequiresEditorRestart);
	EXPECT_TRUE(Descriptor.bProvidesLuaBindings);
	ASSERT_EQ(Descriptor.Tags.Num(), 4);
	EXPECT_TRUE(Descriptor.Tags[0].Equals(FString(TEXT("lua"))));
	EXPECT_TRUE(Descriptor.Tags[1].Equals(FString(TEXT("dmx"))));
	EXPECT_TRUE(Descriptor.Tags[2].Equals(FString(TEXT("fixtures"))));
	EXPECT_TRUE(Descriptor.Tags[3].Equals(FString(TEXT("library"))));

	ASSERT_EQ(Host().Bindings.Num(), 1);
	const FVorlithRegisteredBinding& Binding = Host().Bindings[0];
	EXPECT_TRUE(Binding.OwnerId.Equals(FString(TEXT("vorlith.dmx_engine"))));
	EXPECT_TRUE(Binding.Category.Equals(FString(TEXT("DMXEngine"))));
	EXPECT_NE(Binding.Binder.GetStaticFunction(), nullptr);
}

TEST_F(FModuleLifecycleTest, NineDocumentationRecordsInOrder)
{
	ASSERT_TRUE(Editor->LoadModule(ModuleName));
	const TArray<FLuaFunctionDoc>& Docs = Host().Bindings[0].Docs;
	const FLuaFunctionDoc Expected[] = {
		{TEXT("dmx_library(path)"), TEXT("Open a DMX Library authoring handle"), TEXT("handle")},
		{TEXT("dmx_library(path):add('fixture_type'|'fixture_patch', params)"), TEXT("Create a fixture type or fixture patch in a DMX Library"), TEXT("info")},
		{TEXT("dmx_library(path):configure('fixture_type'|'fixture_patch', name, params)"), TEXT("Configure a fixture type or fixture patch"), TEXT("true or false")},
		{TEXT("dmx_library(path):remove('fixture_type'|'fixture_patch', name)"), TEXT("Remove a fixture type or fixture patch"), TEXT("true or false")},
		{TEXT("dmx_library(path):info()"), TEXT("Inspect fixture type, mode, function, matrix, patch, and derived attribute-map state"), TEXT("table")},
		{TEXT("dmx_component(actor):add(params)"), TEXT("Add or reuse a UDMXComponent on an actor and assign a fixture patch"), TEXT("info")},
		{TEXT("dmx_component(actor):configure(component, params)"), TEXT("Configure UDMXComponent fixture patch and receive state"), TEXT("info")},
		{TEXT("dmx_component(actor):info()"), TEXT("Inspect actor UDMXComponent assignment state"), TEXT("table")},
		{TEXT("dmx_subsystem()"), TEXT("Open deterministic UDMXSubsystem conversion helpers"), TEXT("handle")},
	};
	ASSERT_EQ(Docs.Num(), 9);
	for (int32 Index = 0; Index < 9; ++Index)
	{
		EXPECT_TRUE(Docs[Index].Signature.Equals(Expected[Index].Signature)) << Index;
		EXPECT_TRUE(Docs[Index].Description.Equals(Expected[Index].Description)) << Index;
		EXPECT_TRUE(Docs[Index].Returns.Equals(Expected[Index].Returns)) << Index;
	}
}

TEST_F(FModuleLifecycleTest, ShutdownWithdrawsTheBindingFirstAndTheExtensionSecond)
{
	ASSERT_TRUE(Editor->LoadModule(ModuleName));
	const FGuid BindingId = Host().Bindings[0].BindingId;
	ASSERT_TRUE(BindingId.IsValid());
	Editor->UnloadModules();

	ASSERT_EQ(Host().Events.Num(), 4);
	EXPECT_EQ(Host().Events[2], FString(TEXT("Unregister ")) + BindingId.ToString());
	EXPECT_EQ(Host().Events[3], FString(TEXT("UnregisterExtension vorlith.dmx_engine")));
	EXPECT_TRUE(Host().Bindings.IsEmpty());
	EXPECT_TRUE(Host().Extensions.IsEmpty());
}

TEST_F(FModuleLifecycleTest, ShutdownAfterARefusedRegistrationStillUnregistersBoth)
{
	Host().bRefuseRegistrations = true;
	ASSERT_TRUE(Editor->LoadModule(ModuleName));
	EXPECT_TRUE(Host().Bindings.IsEmpty());
	Editor->UnloadModules();
	ASSERT_EQ(Host().Events.Num(), 4);
	EXPECT_EQ(Host().Events[2], FString(TEXT("Unregister 00000000000000000000000000000000")));
	EXPECT_EQ(Host().Events[3], FString(TEXT("UnregisterExtension vorlith.dmx_engine")));
}

TEST_F(FModuleLifecycleTest, EverySessionGetsTheThreeGlobals)
{
	ASSERT_TRUE(Editor->LoadModule(ModuleName));
	for (int32 Pass = 0; Pass < 2; ++Pass)
	{
		FVorlithLuaSession Session;
		sol::state& Lua = Session.GetState();
		EXPECT_EQ(Lua["dmx_library"].get_type(), sol::type::function);
		EXPECT_EQ(Lua["dmx_component"].get_type(), sol::type::function);
		EXPECT_EQ(Lua["dmx_subsystem"].get_type(), sol::type::function);
	}
	Editor->UnloadModules();
	FVorlithLuaSession After;
	EXPECT_NE(After.GetState()["dmx_library"].get_type(), sol::type::function);
}
