// A test with an editor session (editor, module loaded, Lua) and the helpers most tests need.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include "DMXStateDigest.h"
#include "Editor.h"
#include "Editor/TransBuffer.h"
#include "KestDMXRunner.h"

class FKestSessionTest : public ::testing::Test
{
protected:
	void SetUp() override { Session = std::make_unique<FKestDMXSession>(); }
	void TearDown() override { Session.reset(); }

	// A Lua error fails the test.
	void Run(const std::string& Code)
	{
		std::string Error;
		ASSERT_TRUE(Session->RunScript(Code, "test", Error)) << Error;
	}

	// Library /Game/DMX/Stage with fixture type Spot and its patch Spot1, and the actor Truss.
	void RunSpotOnTrussScene()
	{
		Run(R"(assert(editor.create_library("/Game/DMX/Stage") and editor.spawn_actor("Truss"))
			local lib = dmx_library("/Game/DMX/Stage")
			assert(lib:add("fixture_type", { name = "Spot" }) and lib:add("fixture_patch", { name = "Spot1", fixture_type = "Spot" })))");
	}

	DMXStateDigest::FDigest Digest() const { return DMXStateDigest::TakeDigest(Session->GetEditor().GetEditorWorld()); }
	static int32 UndoableSteps() { return GEditor->Trans->GetUndoTitles().Num(); }
	static std::string LastStepTitle() { return DMXStateDigest::ToUTF8(GEditor->Trans->GetUndoTitles().Last().ToString()); }

	std::unique_ptr<FKestDMXSession> Session;
};
