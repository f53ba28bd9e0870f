// The channel map of the demo rig as a browser shows it: headless Chromium renders the page to a PNG
// and every patch must be in its editor colour at its first channel, free channels white and shared
// channels hatched red, with nothing on the browser's console. Needs Debian's
// chromium-headless-shell (KEST_CHROMIUM, found by CMake); without it the test is skipped.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include "ChannelMapPage.h"
#include "KestDMXRunner.h"
#include "KestDMXText.h"
#include "LibraryReport.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXLibrary.h"
#include "PNGImage.h"
#include "UniverseOccupancy.h"

namespace
{
	const std::filesystem::path SourceDir = KEST_SOURCE_DIR;

	std::string ReadFile(const std::filesystem::path& Path)
	{
		std::ifstream In(Path, std::ios::binary);
		std::stringstream Text;
		Text << In.rdbuf();
		return Text.str();
	}

	std::string Quote(const std::string& Text)
	{
		std::string Quoted = "'";
		for (const char Character : Text)
		{
			Quoted += Character == '\'' ? std::string("'\\''") : std::string(1, Character);
		}
		return Quoted + "'";
	}

	// The linear editor colour as sRGB, the way a colour picker shows it.
	FPNGImage::FPixel ToSRGB(const FLinearColor& Color)
	{
		const auto Encode = [](float Linear)
		{
			const double Clamped = std::min(std::max(static_cast<double>(Linear), 0.0), 1.0);
			const double Encoded = Clamped <= 0.0031308 ? 12.92 * Clamped : 1.055 * std::pow(Clamped, 1.0 / 2.4) - 0.055;
			return static_cast<int>(std::lround(Encoded * 255.0));
		};
		return {Encode(Color.R), Encode(Color.G), Encode(Color.B)};
	}

	bool IsNear(const FPNGImage::FPixel& A, const FPNGImage::FPixel& B, int Tolerance)
	{
		return std::abs(A.R - B.R) <= Tolerance && std::abs(A.G - B.G) <= Tolerance && std::abs(A.B - B.B) <= Tolerance;
	}

	std::string Describe(const FPNGImage::FPixel& Pixel)
	{
		std::string Text = "(";
		Text += std::to_string(Pixel.R) + ", " + std::to_string(Pixel.G) + ", " + std::to_string(Pixel.B) + ")";
		return Text;
	}

	// The share of the cell's pixels (inside its block's border) that are the hatch's red: about a sixth
	// where a label crosses the hatch, none where there is no hatch.
	double GetRedShare(const FPNGImage& Image, const FChannelMapPoint& Point)
	{
		int Red = 0;
		int All = 0;
		for (int Y = Point.Y - ChannelMapCellHeight / 2 - 4; Y <= Point.Y; ++Y)
		{
			for (int X = Point.X - ChannelMapCellWidth / 2 + 4; X <= Point.X + ChannelMapCellWidth / 2 - 4; ++X)
			{
				++All;
				Red += IsNear(Image.At(X, Y), {0xd4, 0x00, 0x00}, 40) ? 1 : 0;
			}
		}
		return static_cast<double>(Red) / All;
	}
}

TEST(FChannelMapRenderTest, DemoRigRendersWithEveryPatchWhereItIs)
{
#ifndef KEST_CHROMIUM
	GTEST_SKIP() << "chromium-headless-shell was not found when the build was configured";
#else
	const std::filesystem::path Work = std::filesystem::temp_directory_path() / ("kestdmx-render-" + std::to_string(::getpid()));
	std::filesystem::remove_all(Work);
	std::filesystem::create_directories(Work);

	FKestDMXSession Session;
	std::string Error;
	testing::internal::CaptureStdout();
	const bool bRan = Session.GetLua().RunFile((SourceDir / "examples" / "stage_rig.lua").string(), Error)
		&& Session.GetLua().RunFile((SourceDir / "examples" / "stage_rig_mistakes.lua").string(), Error);
	testing::internal::GetCapturedStdout();
	ASSERT_TRUE(bRan) << Error;
	UDMXLibrary* Library = LoadLibraryForReport("/Game/DMX/Stage");
	ASSERT_NE(Library, nullptr);
	const std::filesystem::path Page = Work / "stage.html";
	ASSERT_TRUE(WriteChannelMapPage(Page.string(), {Library}, Error)) << Error;

	// Two universes fit the window; the browser is bounded in time.
	const std::filesystem::path Screenshot = Work / "stage.png";
	const std::filesystem::path Log = Work / "chromium.log";
	const std::string Command = "timeout 120 " + Quote(KEST_CHROMIUM)
		+ " --no-sandbox --disable-gpu --disable-background-networking --disable-component-update --disable-sync --no-first-run"
		+ " --user-data-dir=" + Quote((Work / "profile").string()) + " --hide-scrollbars --force-device-scale-factor=1 --window-size="
		+ std::to_string(ChannelMapPageWidth) + ",1100 --enable-logging=stderr --v=0 --screenshot=" + Quote(Screenshot.string()) + " "
		+ Quote("file://" + Page.string()) + " >" + Quote(Log.string()) + " 2>&1";
	ASSERT_EQ(std::system(Command.c_str()), 0) << Command << "\n" << ReadFile(Log);

	std::istringstream LogLines(ReadFile(Log));
	for (std::string Line; std::getline(LogLines, Line);)
	{
		EXPECT_EQ(Line.find(":CONSOLE"), std::string::npos) << "the page logged to the console: " << Line;
	}

	FPNGImage Image;
	ASSERT_TRUE(PNGImage::Decode(ReadFile(Screenshot), Image, Error)) << Error;
	ASSERT_EQ(Image.Width, static_cast<uint32_t>(ChannelMapPageWidth));

	const std::vector<FUniverseOccupancy> Universes = GetUniverseOccupancy(Library);
	ASSERT_EQ(Universes.size(), 2u);
	int32 Checked = 0;
	bool bSawShared = false;
	for (size_t Ordinal = 0; Ordinal < Universes.size(); ++Ordinal)
	{
		const FUniverseOccupancy& Occupancy = Universes[Ordinal];
		for (const FPatchPlacement& Placement : Occupancy.Patches)
		{
			// The block's first channel and its last one on the grid.
			for (const int32 Channel : {Placement.Start, std::min(Placement.End, DMXChannelsPerUniverse)})
			{
				const FChannelMapPoint Point = GetChannelMapCellPoint(static_cast<int32>(Ordinal), Channel);
				ASSERT_LT(static_cast<uint32_t>(Point.Y), Image.Height);
				const std::string Where = ToUTF8(Placement.Patch->Name) + " at channel " + std::to_string(Channel) + " of universe " + std::to_string(Occupancy.Universe);
				if (Occupancy.Claims[Channel] > 1)
				{
					EXPECT_GT(GetRedShare(Image, Point), 0.1) << Where << " is shared and should be hatched red";
					bSawShared = true;
					continue;
				}
				const FPNGImage::FPixel Expected = ToSRGB(Placement.Patch->EditorColor);
				EXPECT_TRUE(IsNear(Image.At(Point.X, Point.Y), Expected, 2)) << Where << ": " << Describe(Image.At(Point.X, Point.Y)) << " instead of " << Describe(Expected);
				EXPECT_LT(GetRedShare(Image, Point), 0.01) << Where;
				++Checked;
			}
		}
		for (const auto& [First, Last] : Occupancy.FreeRanges)
		{
			for (const int32 Channel : {First, Last})
			{
				const FChannelMapPoint Point = GetChannelMapCellPoint(static_cast<int32>(Ordinal), Channel);
				EXPECT_TRUE(IsNear(Image.At(Point.X, Point.Y), {255, 255, 255}, 0)) << "free channel " << Channel << " of universe " << Occupancy.Universe
					<< ": " << Describe(Image.At(Point.X, Point.Y));
			}
		}
	}
	EXPECT_TRUE(bSawShared) << "the demo's mistakes put Spot 5 over Spot 2";
	EXPECT_GE(Checked, 24);
	std::filesystem::remove_all(Work);
#endif
}
