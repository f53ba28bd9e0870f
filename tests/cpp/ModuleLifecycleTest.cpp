#include <gtest/gtest.h>

#include "HeadlessEditor.h"
#include "Modules/ModuleManager.h"
#include "VorlithHostRecorder.h"
#include "module/DMXLuaParams.h"

extern "C" void ThisIsAnUnrealEngineModule();

namespace
{
	const TCHAR* const ModuleName = TEXT("Kest_DMXEngine_Integration");

	FVorlithHostRecorder& Host() { return FVorlithHostRecorder::Get(); }

	// Compared case-sensitively, unlike FString's ==.
	std::string Text(const FString& Value) { return ConvertEngineText(Value); }

	class FModuleLifecycleTest : public ::testing::Test
	{
	protected:
		std::unique_ptr<FHeadlessEditor> Editor = std::make_unique<FHeadlessEditor>();
	};
}

TEST_F(FModuleLifecycleTest, StartupRegistersTheExtensionThenTheBindingWithItsDocumentation)
{
	ASSERT_NE(FModuleInitializerEntry::FindModule(ModuleName), nullptr);
	EXPECT_NE(&ThisIsAnUnrealEngineModule, nullptr);
	ASSERT_TRUE(Editor->LoadModule(ModuleName));
	ASSERT_EQ(Host().Events.Num(), 2);
	EXPECT_EQ(Text(Host().Events[0]), "RegisterExtension vorlith.dmx_engine");
	EXPECT_EQ(Text(Host().Events[1]), "RegisterOwned vorlith.dmx_engine DMXEngine");

	ASSERT_EQ(Host().Extensions.Num(), 1);
	const FVorlithExtensionDescriptor& Descriptor = Host().Extensions[0];
	std::string Fields = Text(Descriptor.Id) + "|" + Text(Descriptor.DisplayName) + "|" + Text(Descriptor.ModuleName) + "|" + Text(Descriptor.Version)
		+ "|" + Text(Descriptor.Keyword) + "|" + Text(Descriptor.Description) + "|" + std::to_string(Descriptor.bExperimental)
		+ std::to_string(Descriptor.bRequiresEditorRestart) + std::to_string(Descriptor.bProvidesLuaBindings) + "|";
	for (const FString& Tag : Descriptor.Tags)
	{
		Fields += Text(Tag) + ",";
	}
	EXPECT_EQ(Fields, "vorlith.dmx_engine|DMX Engine|Kest_DMXEngine_Integration|0.1.0|dmx|"
		"Author DMX Library fixture types and fixture patches from Lua.|001|lua,dmx,fixtures,library,");
	EXPECT_FALSE(Descriptor.Author.IsEmpty());

	ASSERT_EQ(Host().Bindings.Num(), 1);
	const FVorlithRegisteredBinding& Binding = Host().Bindings[0];
	EXPECT_EQ(Text(Binding.OwnerId) + " " + Text(Binding.Category), "vorlith.dmx_engine DMXEngine");
	EXPECT_NE(Binding.Binder.GetStaticFunction(), nullptr);
	std::string Docs;
	for (const FLuaFunctionDoc& Doc : Binding.Docs)
	{
		Docs += Text(Doc.Signature) + " | " + Text(Doc.Description) + " | " + Text(Doc.Returns) + "\n";
	}
	EXPECT_EQ(Docs, R"(dmx_library(path) | Open a DMX Library authoring handle | handle
dmx_library(path):add('fixture_type'|'fixture_patch', params) | Create a fixture type or fixture patch in a DMX Library | info
dmx_library(path):configure('fixture_type'|'fixture_patch', name, params) | Configure a fixture type or fixture patch | true or false
dmx_library(path):remove('fixture_type'|'fixture_patch', name) | Remove a fixture type or fixture patch | true or false
dmx_library(path):info() | Inspect fixture type, mode, function, matrix, patch, and derived attribute-map state | table
dmx_component(actor):add(params) | Add or reuse a UDMXComponent on an actor and assign a fixture patch | info
dmx_component(actor):configure(component, params) | Configure UDMXComponent fixture patch and receive state | info
dmx_component(actor):info() | Inspect actor UDMXComponent assignment state | table
dmx_subsystem() | Open deterministic UDMXSubsystem conversion helpers | handle
)");
}

TEST_F(FModuleLifecycleTest, ShutdownWithdrawsTheBindingFirstAndTheExtensionSecondEvenAfterARefusal)
{
	for (const bool bRefuse : {false, true})
	{
		Editor.reset();
		Editor = std::make_unique<FHeadlessEditor>();
		Host().bRefuseRegistrations = bRefuse;
		ASSERT_TRUE(Editor->LoadModule(ModuleName));
		ASSERT_EQ(Host().Bindings.Num(), bRefuse ? 0 : 1);
		const FGuid BindingId = bRefuse ? FGuid() : Host().Bindings[0].BindingId;
		ASSERT_TRUE(bRefuse || BindingId.IsValid());
		Editor->UnloadModules();
		ASSERT_EQ(Host().Events.Num(), 4);
		EXPECT_EQ(Text(Host().Events[2]), "Unregister " + Text(BindingId.ToString()));
		EXPECT_EQ(Text(Host().Events[3]), "UnregisterExtension vorlith.dmx_engine");
		EXPECT_TRUE(Host().Bindings.IsEmpty() && Host().Extensions.IsEmpty());
	}
}
