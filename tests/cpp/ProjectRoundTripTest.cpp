#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <unistd.h>

#include "Editor.h"
#include "Engine/World.h"
#include "Game/DMXComponent.h"
#include "GameFramework/Actor.h"
#include "KestDMXProject.h"
#include "KestDMXRunner.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "UObject/UObjectGlobals.h"
#include "UObject/UnrealType.h"

namespace
{
	std::string ToUTF8(const FString& Text)
	{
		FTCHARToUTF8 Converted(*Text, Text.Len());
		return Converted.Get() ? std::string(Converted.Get(), static_cast<size_t>(Converted.Length())) : std::string();
	}

	UDMXLibrary* FindLibrary(const TCHAR* ObjectPath)
	{
		const FString Path(ObjectPath);
		return LoadObject<UDMXLibrary>(nullptr, FStringView(*Path, static_cast<size_t>(Path.Len())));
	}

	// Every value a library and the level hold, written out independently of the project files.
	// Floating point values are written exactly.
	std::string DescribeFunction(const FDMXFixtureFunction& Function)
	{
		std::ostringstream Out;
		Out << std::hexfloat << "  fn " << ToUTF8(Function.Attribute.Name.ToString()) << "|" << ToUTF8(Function.FunctionName) << "|"
			<< ToUTF8(Function.Description) << "|" << Function.DefaultValue << "|" << Function.Channel << "|" << int(Function.DataType) << "|"
			<< Function.bUseLSBMode << "|" << int(Function.GetPhysicalUnit()) << "|" << Function.GetPhysicalFrom() << "|"
			<< Function.GetPhysicalTo() << "|" << Function.GetPhysicalDefaultValue() << "\n";
		return Out.str();
	}

	std::string DescribeLibrary(UDMXLibrary* Library)
	{
		std::ostringstream Out;
		Out << std::hexfloat << ToUTF8(Library->GetPathName()) << "\n";
		for (UDMXEntity* Entity : Library->GetEntities())
		{
			Out << ToUTF8(Entity->GetClass()->GetName()) << " " << ToUTF8(Entity->GetName()) << " \"" << ToUTF8(Entity->Name) << "\" "
				<< ToUTF8(Entity->GetID().ToString()) << " lib=" << (Entity->GetParentLibrary() == Library) << "\n";
			if (const UDMXEntityFixtureType* FixtureType = Cast<UDMXEntityFixtureType>(Entity))
			{
				Out << " category " << ToUTF8(FixtureType->DMXCategory.Name.ToString()) << " gdtf " << FixtureType->bExportGeneratedGDTF << FixtureType->bShowOnlyLatestGDTFModeRevisions << "\n";
				for (const FDMXFixtureMode& Mode : FixtureType->Modes)
				{
					Out << " mode \"" << ToUTF8(Mode.ModeName) << "\" auto " << Mode.bAutoChannelSpan << " span " << Mode.ChannelSpan << " matrix " << Mode.bFixtureMatrixEnabled << "\n";
					for (const FDMXFixtureFunction& Function : Mode.Functions)
					{
						Out << DescribeFunction(Function);
					}
					const FDMXFixtureMatrix& Matrix = Mode.FixtureMatrixConfig;
					Out << "  matrix " << Matrix.FirstCellChannel << " " << Matrix.XCells << "x" << Matrix.YCells << " " << int(Matrix.PixelMappingDistribution) << "\n";
					for (const FDMXFixtureCellAttribute& Cell : Matrix.CellAttributes)
					{
						Out << "  cell " << ToUTF8(Cell.Attribute.Name.ToString()) << "|" << ToUTF8(Cell.Description) << "|" << Cell.DefaultValue << "|"
							<< int(Cell.DataType) << "|" << Cell.bUseLSBMode << "\n";
					}
				}
			}
			else if (const UDMXEntityFixturePatch* FixturePatch = Cast<UDMXEntityFixturePatch>(Entity))
			{
				const UDMXEntityFixtureType* FixtureType = FixturePatch->GetFixtureType();
				Out << " type " << (FixtureType ? ToUTF8(FixtureType->GetID().ToString()) : std::string("none")) << " universe " << FixturePatch->GetUniverseID()
					<< " start " << FixturePatch->GetStartingChannel() << " mode " << FixturePatch->GetActiveModeIndex() << " span " << FixturePatch->GetChannelSpan()
					<< " id " << FixturePatch->GetFixtureID() << " mvr " << ToUTF8(FixturePatch->GetMVRFixtureUUID().ToString()) << " receive " << FixturePatch->bReceiveDMXInEditor
					<< " color " << FixturePatch->EditorColor.R << " " << FixturePatch->EditorColor.G << " " << FixturePatch->EditorColor.B << " " << FixturePatch->EditorColor.A
					<< " valid " << FixturePatch->IsValidEntity() << "\n tags";
				for (const FName& Tag : FixturePatch->CustomTags)
				{
					Out << " \"" << ToUTF8(Tag.ToString()) << "\"";
				}
				Out << "\n";
			}
		}
		return Out.str();
	}

	std::string DescribeLevel(UWorld* World)
	{
		const FBoolProperty* ReceiveProperty = FindFProperty<FBoolProperty>(UDMXComponent::StaticClass(), TEXT("bReceiveDMXFromPatch"));
		std::ostringstream Out;
		for (AActor* Actor : World->GetActors())
		{
			Out << ToUTF8(Actor->GetName()) << " \"" << ToUTF8(Actor->GetActorLabel(false)) << "\"\n";
			TArray<UDMXComponent*> Components;
			Actor->GetComponents(Components);
			for (UDMXComponent* Component : Components)
			{
				UDMXEntityFixturePatch* FixturePatch = Component->GetFixturePatch();
				Out << " " << ToUTF8(Component->GetName()) << " registered " << Component->IsRegistered()
					<< " transactional " << Component->HasAnyFlags(RF_Transactional)
					<< " instance " << Actor->GetInstanceComponents().Contains(Component)
					<< " receive " << ReceiveProperty->GetPropertyValue_InContainer(Component)
					<< " patch " << (FixturePatch ? ToUTF8(FixturePatch->GetPathName()) + " " + ToUTF8(FixturePatch->GetID().ToString()) : std::string("none")) << "\n";
			}
		}
		return Out.str();
	}

	std::string ReadFile(const std::filesystem::path& File)
	{
		std::ifstream Stream(File, std::ios::binary);
		std::ostringstream Text;
		Text << Stream.rdbuf();
		return Text.str();
	}

	std::map<std::string, std::string> ReadAllFiles(const std::filesystem::path& Folder)
	{
		std::map<std::string, std::string> Files;
		for (const auto& Entry : std::filesystem::recursive_directory_iterator(Folder))
		{
			if (Entry.is_regular_file())
			{
				Files[Entry.path().lexically_relative(Folder).generic_string()] = ReadFile(Entry.path());
			}
		}
		return Files;
	}

	class FProjectRoundTripTest : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			const ::testing::TestInfo* Info = ::testing::UnitTest::GetInstance()->current_test_info();
			ProjectDir = std::filesystem::temp_directory_path() / ("kest_project_" + std::string(Info->name()) + "_" + std::to_string(getpid()));
			std::filesystem::remove_all(ProjectDir);
			std::filesystem::create_directories(ProjectDir);
		}
		void TearDown() override { std::filesystem::remove_all(ProjectDir); }

		// Two libraries and a level, with values that the editor's own helpers would not produce on
		// their own: odd physical values, a patch without a type, a patch ahead of its type, a
		// fixture ID and colours set by hand. Saved to the project; answers the description.
		std::string BuildAndSave()
		{
			FKestDMXSession Session;
			std::string Error;
			EXPECT_TRUE(Session.RunScript(
				"assert(editor.create_library('/Game/DMX/Stage'))\n"
				"assert(editor.create_library('/Game/DMX/Sub/Floor'))\n"
				"assert(editor.spawn_actor('Spot_1', 'Spot Left'))\n"
				"assert(editor.spawn_actor('Bar'))\n"
				"assert(editor.spawn_actor('Empty', 'Nothing here'))\n",
				"setup", Error)) << Error;
			UDMXLibrary* Stage = FindLibrary(TEXT("/Game/DMX/Stage.Stage"));
			UDMXLibrary* Floor = FindLibrary(TEXT("/Game/DMX/Sub/Floor.Floor"));
			EXPECT_TRUE(Stage && Floor);
			if (!Stage || !Floor)
			{
				return std::string();
			}

			FDMXEntityFixtureTypeConstructionParams TypeParams;
			TypeParams.ParentDMXLibrary = Stage;
			TypeParams.DMXCategory = FDMXFixtureCategory(FName(TEXT("Moving Head")));
			FDMXFixtureMode Standard;
			Standard.ModeName = TEXT("Standard \"16\" \u00e9");
			FDMXFixtureFunction Pan;
			Pan.Attribute = FDMXAttributeName(FName(TEXT("Pan")));
			Pan.FunctionName = TEXT("Pan");
			Pan.Description = TEXT("line one\nline two");
			Pan.DataType = EDMXFixtureSignalFormat::E16Bit;
			Pan.bUseLSBMode = true;
			Pan.SetPhysicalUnit(EDMXGDTFPhysicalUnit::Angle);
			Pan.SetPhysicalValueRange(-270.0, 270.0);
			Pan.SetPhysicalDefaultValue(0.1 + 0.2);
			Pan.DefaultValue = 40000;
			Standard.Functions.Add(Pan);
			FDMXFixtureFunction Dimmer;
			Dimmer.Attribute = FDMXAttributeName(FName(TEXT("Dimmer")));
			Dimmer.FunctionName = TEXT("Dimmer");
			Dimmer.Channel = 3;
			Dimmer.DataType = EDMXFixtureSignalFormat::E32Bit;
			Dimmer.DefaultValue = 4294967295LL;
			Dimmer.SetPhysicalValueRange(1.0, 0.0);
			Standard.Functions.Add(Dimmer);
			Standard.bAutoChannelSpan = false;
			Standard.ChannelSpan = 12;
			TypeParams.Modes.Add(Standard);
			FDMXFixtureMode Pixels;
			Pixels.ModeName = TEXT("Pixels");
			Pixels.bFixtureMatrixEnabled = true;
			Pixels.FixtureMatrixConfig.XCells = 4;
			Pixels.FixtureMatrixConfig.YCells = 2;
			Pixels.FixtureMatrixConfig.FirstCellChannel = 2;
			Pixels.FixtureMatrixConfig.PixelMappingDistribution = EDMXPixelMappingDistribution::BottomRightToAntiClockwise;
			FDMXFixtureCellAttribute Green;
			Green.Attribute = FDMXAttributeName(FName(TEXT("Green")));
			Green.Description = TEXT("g");
			Green.DefaultValue = 7;
			Green.DataType = EDMXFixtureSignalFormat::E24Bit;
			Green.bUseLSBMode = true;
			Pixels.FixtureMatrixConfig.CellAttributes.Add(Green);
			Pixels.ChannelSpan = 99;
			TypeParams.Modes.Add(Pixels);
			UDMXEntityFixtureType* Spot = UDMXEntityFixtureType::CreateFixtureTypeInLibrary(TypeParams, TEXT("Spot"));
			EXPECT_NE(Spot, nullptr);
			Spot->bExportGeneratedGDTF = true;

			FDMXEntityFixtureTypeConstructionParams EmptyParams;
			EmptyParams.ParentDMXLibrary = Stage;
			UDMXEntityFixtureType* Gone = UDMXEntityFixtureType::CreateFixtureTypeInLibrary(EmptyParams, TEXT("Gone"));
			Gone->AddMode();

			FDMXEntityFixturePatchConstructionParams PatchParams;
			PatchParams.FixtureTypeRef = FDMXEntityFixtureTypeRef(Spot);
			PatchParams.UniverseID = 3;
			PatchParams.StartingAddress = 500;
			PatchParams.ActiveMode = 1;
			UDMXEntityFixturePatch* Spot1 = UDMXEntityFixturePatch::CreateFixturePatchInLibrary(PatchParams, TEXT("Spot 1"));
			Spot1->CustomTags = {FName(TEXT("truss")), FName(TEXT("Stage Left"))};
			Spot1->EditorColor = FLinearColor(0.1f, 1.0f / 3.0f, 2.5f, 0.25f);
			Spot1->bReceiveDMXInEditor = true;
			Spot1->GenerateFixtureID(42);
			PatchParams.StartingAddress = 1;
			PatchParams.ActiveMode = 0;
			UDMXEntityFixturePatch* Spot2 = UDMXEntityFixturePatch::CreateFixturePatchInLibrary(PatchParams, TEXT("Spot 2"));
			Spot2->SetUniverseID(-4);
			PatchParams.FixtureTypeRef = FDMXEntityFixtureTypeRef(Gone);
			UDMXEntityFixturePatch* Orphan = UDMXEntityFixturePatch::CreateFixturePatchInLibrary(PatchParams, TEXT("Orphan"));
			Orphan->SetStartingChannel(0);
			UDMXEntityFixtureType::RemoveFixtureTypeFromLibrary(FDMXEntityFixtureTypeRef(Gone));
			EXPECT_EQ(Orphan->GetFixtureType(), nullptr);
			// Spot 2 ahead of its fixture type.
			Stage->SetEntityIndex(Spot2, 0);

			FDMXEntityFixtureTypeConstructionParams FloorParams;
			FloorParams.ParentDMXLibrary = Floor;
			FloorParams.Modes.Add(FDMXFixtureMode());
			FloorParams.Modes[0].ModeName = TEXT("1ch");
			FloorParams.Modes[0].Functions.Add(FDMXFixtureFunction());
			UDMXEntityFixtureType* FloorType = UDMXEntityFixtureType::CreateFixtureTypeInLibrary(FloorParams, TEXT("Par"));
			FDMXEntityFixturePatchConstructionParams FloorPatchParams;
			FloorPatchParams.FixtureTypeRef = FDMXEntityFixtureTypeRef(FloorType);
			UDMXEntityFixturePatch* Par = UDMXEntityFixturePatch::CreateFixturePatchInLibrary(FloorPatchParams, TEXT("Par"));

			AActor* SpotActor = Cast<AActor>(StaticFindObjectFast(nullptr, Session.GetEditor().GetEditorWorld()->GetCurrentLevel(), FName(TEXT("Spot_1"))));
			AActor* BarActor = Cast<AActor>(StaticFindObjectFast(nullptr, Session.GetEditor().GetEditorWorld()->GetCurrentLevel(), FName(TEXT("Bar"))));
			const auto AddComponent = [](AActor* Actor, const TCHAR* Name, UDMXEntityFixturePatch* Patch, bool bReceive)
			{
				UDMXComponent* Component = NewObject<UDMXComponent>(Actor, UDMXComponent::StaticClass(), FName(Name), RF_Transactional);
				Actor->AddInstanceComponent(Component);
				Component->RegisterComponent();
				Component->SetFixturePatch(Patch);
				Component->SetReceiveDMXFromPatch(bReceive);
			};
			AddComponent(SpotActor, TEXT("DMXComponent"), Spot1, false);
			AddComponent(SpotActor, TEXT("Second"), Par, true);
			AddComponent(BarActor, TEXT("Unpatched"), nullptr, false);
			SpotActor->MarkPackageDirty();
			Stage->MarkPackageDirty();
			Floor->MarkPackageDirty();

			const std::string Description = DescribeLibrary(Stage) + DescribeLibrary(Floor) + DescribeLevel(Session.GetEditor().GetEditorWorld());
			std::vector<std::string> Saved;
			EXPECT_TRUE(SaveKestDMXProject(ProjectDir.string(), Session.GetEditor(), Error, &Saved)) << Error;
			EXPECT_EQ(Saved.size(), 3u);
			EXPECT_TRUE(Session.GetEditor().GetDirtyPackageNames().IsEmpty());
			return Description;
		}

		std::filesystem::path ProjectDir;
	};
}

TEST_F(FProjectRoundTripTest, EveryValueSurvivesSaveAndLoad)
{
	const std::string Before = BuildAndSave();
	ASSERT_FALSE(Before.empty());
	EXPECT_TRUE(std::filesystem::is_regular_file(ProjectDir / "Content/DMX/Stage.dmxlib.json"));
	EXPECT_TRUE(std::filesystem::is_regular_file(ProjectDir / "Content/DMX/Sub/Floor.dmxlib.json"));
	EXPECT_TRUE(std::filesystem::is_regular_file(ProjectDir / "Content/Maps/Untitled.level.json"));
	for (const auto& Entry : std::filesystem::recursive_directory_iterator(ProjectDir))
	{
		EXPECT_NE(Entry.path().extension(), ".tmp") << Entry.path();
	}

	FKestDMXSession Session;
	std::string Error;
	ASSERT_TRUE(LoadKestDMXProject(ProjectDir.string(), Session.GetEditor(), Error)) << Error;
	UDMXLibrary* Stage = FindLibrary(TEXT("/Game/DMX/Stage.Stage"));
	UDMXLibrary* Floor = FindLibrary(TEXT("/Game/DMX/Sub/Floor.Floor"));
	ASSERT_TRUE(Stage && Floor);
	const std::string After = DescribeLibrary(Stage) + DescribeLibrary(Floor) + DescribeLevel(Session.GetEditor().GetEditorWorld());
	EXPECT_EQ(Before, After);
	// Loading is not an edit: nothing to save, nothing to undo.
	EXPECT_TRUE(Session.GetEditor().GetDirtyPackageNames().IsEmpty());
	EXPECT_TRUE(GEditor->Trans->GetUndoTitles().IsEmpty());

	// Saving the loaded project again writes the same bytes.
	const std::map<std::string, std::string> FirstFiles = ReadAllFiles(ProjectDir);
	Stage->MarkPackageDirty();
	Floor->MarkPackageDirty();
	Session.GetEditor().GetEditorWorld()->MarkPackageDirty();
	ASSERT_TRUE(SaveKestDMXProject(ProjectDir.string(), Session.GetEditor(), Error)) << Error;
	EXPECT_EQ(FirstFiles, ReadAllFiles(ProjectDir));
}

TEST_F(FProjectRoundTripTest, OnlyDirtyPackagesAreSaved)
{
	ASSERT_FALSE(BuildAndSave().empty());
	const std::map<std::string, std::string> Files = ReadAllFiles(ProjectDir);

	FKestDMXSession Session;
	std::string Error;
	ASSERT_TRUE(LoadKestDMXProject(ProjectDir.string(), Session.GetEditor(), Error)) << Error;
	ASSERT_TRUE(Session.RunScript("assert(editor.create_library('/Game/New'))", "new", Error)) << Error;
	UDMXLibrary* Floor = FindLibrary(TEXT("/Game/DMX/Sub/Floor.Floor"));
	ASSERT_NE(Floor, nullptr);
	Floor->GetEntities()[0]->Name = TEXT("Renamed");
	Floor->MarkPackageDirty();
	std::vector<std::string> Saved;
	ASSERT_TRUE(SaveKestDMXProject(ProjectDir.string(), Session.GetEditor(), Error, &Saved)) << Error;
	ASSERT_EQ(Saved.size(), 2u);

	std::map<std::string, std::string> Now = ReadAllFiles(ProjectDir);
	EXPECT_EQ(Now["Content/DMX/Stage.dmxlib.json"], Files.at("Content/DMX/Stage.dmxlib.json"));
	EXPECT_EQ(Now["Content/Maps/Untitled.level.json"], Files.at("Content/Maps/Untitled.level.json"));
	EXPECT_NE(Now["Content/DMX/Sub/Floor.dmxlib.json"].find("\"Renamed\""), std::string::npos);
	EXPECT_NE(Now["Content/New.dmxlib.json"].find("\"entities\": []"), std::string::npos) << Now["Content/New.dmxlib.json"];
}

TEST_F(FProjectRoundTripTest, ABrokenFileIsNamedAndNothingIsWritten)
{
	ASSERT_FALSE(BuildAndSave().empty());
	const std::filesystem::path Broken = ProjectDir / "Content/DMX/Sub/Floor.dmxlib.json";
	{
		std::ofstream Stream(Broken, std::ios::binary | std::ios::trunc);
		Stream << "{\"format\": \"kestdmx-dmx-library\", \"version\": 1, \"entities\": [";
	}
	const std::map<std::string, std::string> Files = ReadAllFiles(ProjectDir);
	{
		FKestDMXSession Session;
		std::string Error;
		EXPECT_FALSE(LoadKestDMXProject(ProjectDir.string(), Session.GetEditor(), Error));
		EXPECT_NE(Error.find(Broken.string()), std::string::npos) << Error;
	}

	// The runner stops before any script runs and saves nothing.
	const std::filesystem::path Script = ProjectDir / "edit.lua";
	{
		std::ofstream Stream(Script);
		Stream << "assert(editor.create_library('/Game/Other'))\n";
	}
	const std::map<std::string, std::string> WithScript = ReadAllFiles(ProjectDir);
	testing::internal::CaptureStderr();
	EXPECT_EQ(RunKestDMXCommandLine({"run", "--project", ProjectDir.string(), Script.string()}), 1);
	const std::string Stderr = testing::internal::GetCapturedStderr();
	EXPECT_NE(Stderr.find("Floor.dmxlib.json"), std::string::npos) << Stderr;
	EXPECT_EQ(ReadAllFiles(ProjectDir), WithScript);

	// A missing field and a patch whose type is not in its library are named too.
	const std::pair<const char*, const char*> Cases[] =
	{
		{"{\"format\": \"kestdmx-dmx-library\", \"version\": 1, \"entities\": [{\"kind\": \"fixture_type\", \"name\": \"A\"}]}", "object"},
		{"{\"format\": \"kestdmx-dmx-library\", \"version\": 1, \"entities\": [{\"kind\": \"fixture_patch\", \"name\": \"P\", \"object\": \"P\", "
			"\"id\": \"00000000000000000000000000000001\", \"fixture_type\": {\"name\": \"Missing\"}}]}", "fixture type"},
		{"[1, 2]", "format"},
	};
	for (const auto& [Text, Expected] : Cases)
	{
		{
			std::ofstream Stream(Broken, std::ios::binary | std::ios::trunc);
			Stream << Text;
		}
		FKestDMXSession Session;
		std::string Error;
		EXPECT_FALSE(LoadKestDMXProject(ProjectDir.string(), Session.GetEditor(), Error));
		EXPECT_NE(Error.find(Broken.string()), std::string::npos) << Error;
		EXPECT_NE(Error.find(Expected), std::string::npos) << Error;
	}
}

TEST_F(FProjectRoundTripTest, AFailedRunSavesNothing)
{
	ASSERT_FALSE(BuildAndSave().empty());
	const std::filesystem::path Script = ProjectDir / "fails.lua";
	{
		std::ofstream Stream(Script);
		Stream << "assert(editor.create_library('/Game/Other'))\nassert(editor.spawn_actor('More'))\nerror('stop here')\n";
	}
	const std::map<std::string, std::string> Files = ReadAllFiles(ProjectDir);
	testing::internal::CaptureStderr();
	EXPECT_EQ(RunKestDMXCommandLine({"run", "--project", ProjectDir.string(), Script.string()}), 1);
	EXPECT_NE(testing::internal::GetCapturedStderr().find("stop here"), std::string::npos);
	EXPECT_EQ(ReadAllFiles(ProjectDir), Files);
}

TEST(ProjectFilesTest, PackagesMapToFilesUnderContent)
{
	EXPECT_EQ(GetProjectFileForPackage("/p", FString(TEXT("/Game/DMX/Stage"))), "/p/Content/DMX/Stage.dmxlib.json");
	EXPECT_EQ(GetProjectFileForPackage("/p", FString(TEXT("/Game/Maps/Untitled"))), "/p/Content/Maps/Untitled.level.json");
	EXPECT_EQ(GetProjectFileForPackage("/p", FString(TEXT("/Engine/Stage"))), "");
	EXPECT_EQ(GetProjectFileForPackage("/p", FString(TEXT("/Game/"))), "");
}
