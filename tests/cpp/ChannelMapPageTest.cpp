// The channel map page read back as a document: self-contained, names escaped, every patch block
// where its channels are, shared channels and invalid patches marked, and the panel's free ranges.
#include <gtest/gtest.h>

#include <pugixml.hpp>
#include <string>
#include <vector>
#include "ChannelMapPage.h"
#include "KestSessionTest.h"
#include "LibraryReport.h"

namespace
{
	class FChannelMapPageTest : public FKestSessionTest
	{
	protected:
		// Universe 1: A at 1-4, a name full of markup at 30-37 (over two grid rows), B at 36-39
		// sharing 36-37 with it, Late at 510-513 past the end; Void without channels. Universe 7: C.
		void SetUp() override
		{
			FKestSessionTest::SetUp();
			Run(R"(assert(editor.create_library("/Game/DMX/Map"))
				local lib = dmx_library("/Game/DMX/Map")
				assert(lib:add("fixture_type", { name = "Four", modes = { { name = "4ch", functions = {
					{ attribute = "Dimmer" }, { attribute = "Red" }, { attribute = "Green" }, { attribute = "Blue" } } } } }))
				assert(lib:add("fixture_type", { name = "Eight", modes = { { name = "8ch", functions = {
					{ attribute = "Dimmer" }, { attribute = "Shutter" } },
					matrix = { enabled = true, x_cells = 6, first_cell_channel = 2, cell_attributes = { { attribute = "Red" } } } } } }))
				assert(lib:add("fixture_type", { name = "Blank", modes = {} }))
				local function patch(name, type, universe, channel)
					assert(lib:add("fixture_patch", { name = name, fixture_type = type, universe = universe, starting_channel = channel,
						editor_color = { r = 0.0, g = 0.5, b = 1.0 }, tags = { "front" } }))
				end
				patch("A", "Four", 1, 1)
				patch("<b>&\"'\n", "Eight", 1, 30)
				patch("B", "Four", 1, 36)
				patch("Late", "Four", 1, 510)
				patch("Void", "Blank", 1, 100)
				patch("C", "Four", 7, 1))");
			Page = FormatChannelMapPage({LoadLibraryForReport("/Game/DMX/Map")});
			const pugi::xml_parse_result Parsed = Document.load_string(Page.c_str(), pugi::parse_default | pugi::parse_doctype);
			ASSERT_TRUE(Parsed) << Parsed.description() << " at " << Parsed.offset << ": " << Page.substr(Parsed.offset, 80);
		}

		std::vector<pugi::xml_node> Select(const char* XPath) const
		{
			std::vector<pugi::xml_node> Nodes;
			for (const pugi::xpath_node& Found : Document.select_nodes(XPath))
			{
				Nodes.push_back(Found.node());
			}
			return Nodes;
		}

		// The patch block whose title starts with the name.
		pugi::xml_node FindBlock(const pugi::xml_node& Grid, const std::string& Name) const
		{
			for (const pugi::xml_node Block : Grid.children("g"))
			{
				const std::string Title = Block.child_value("title");
				if (Title.rfind(Name + "\n", 0) == 0)
				{
					return Block;
				}
			}
			return {};
		}

		std::string Page;
		pugi::xml_document Document;
	};

	int Attribute(const pugi::xml_node& Node, const char* Name)
	{
		return Node.attribute(Name).as_int(-1);
	}
}

TEST_F(FChannelMapPageTest, PageFetchesNothingAndRunsNothing)
{
	EXPECT_TRUE(Select("//script | //link | //img | //iframe | //object | //embed").empty());
	for (const pugi::xpath_node& Found : Document.select_nodes("//@src | //@href"))
	{
		EXPECT_EQ(Found.attribute().value()[0], '#') << Found.attribute().name() << "=" << Found.attribute().value();
	}
	const std::string Style = Document.select_node("//style").node().child_value();
	EXPECT_EQ(Style.find("@import"), std::string::npos);
	EXPECT_EQ(Style.find("@font-face"), std::string::npos);
	for (size_t At = Style.find("url("); At != std::string::npos; At = Style.find("url(", At + 1))
	{
		EXPECT_EQ(Style.compare(At, 5, "url(#"), 0) << Style.substr(At, 40);
	}
	EXPECT_EQ(Page.find("http:"), std::string::npos);
	EXPECT_EQ(Page.find("https:"), std::string::npos);
}

TEST_F(FChannelMapPageTest, BlocksSitOnTheirChannelsWithEscapedNamesAndMarks)
{
	const std::vector<pugi::xml_node> Grids = Select("//svg[@class='grid']");
	ASSERT_EQ(Grids.size(), 2u);
	EXPECT_STREQ(Grids[0].attribute("aria-label").value(), "Universe 1");
	EXPECT_STREQ(Grids[1].attribute("aria-label").value(), "Universe 7");

	// A at 1-4: one block four cells wide; the markup-named patch at 30-37 wraps from the last
	// three cells of the first row to the first five of the second.
	const pugi::xml_node A = FindBlock(Grids[0], "A");
	ASSERT_TRUE(A);
	const pugi::xml_node ARect = A.child("rect");
	EXPECT_EQ(Attribute(ARect, "width"), 4 * ChannelMapCellWidth - 2);
	EXPECT_STREQ(ARect.attribute("fill").value(), "#00bcff");

	const pugi::xml_node Marked = FindBlock(Grids[0], "<b>&\"'\\n");
	ASSERT_TRUE(Marked) << "the name is escaped, its line break shown as \\n";
	const std::string Title = Marked.child_value("title");
	for (const char* Line : {"\nFixture type: Eight\n", "\nMode: 0 \"8ch\"\n", "\nChannels: 30\xE2\x80\x93" "37 of universe 1 (8 channels)\n", "\nFixture ID: 2\n", "\nTags: front\n", "\nShares channels with: B"})
	{
		EXPECT_NE(Title.find(Line), std::string::npos) << Line << " in " << Title;
	}
	std::vector<pugi::xml_node> Rects;
	for (const pugi::xml_node Rect : Marked.children("rect"))
	{
		Rects.push_back(Rect);
	}
	ASSERT_EQ(Rects.size(), 2u);
	EXPECT_EQ(Attribute(Rects[0], "width"), 3 * ChannelMapCellWidth - 2);
	EXPECT_EQ(Attribute(Rects[1], "width"), 5 * ChannelMapCellWidth - 2);
	EXPECT_EQ(Attribute(Rects[0], "x") - Attribute(Rects[1], "x"), 29 * ChannelMapCellWidth);
	EXPECT_EQ(Attribute(Rects[1], "y") - Attribute(Rects[0], "y"), ChannelMapCellHeight);
	EXPECT_EQ(Attribute(ARect, "x"), Attribute(Rects[1], "x"));

	// Labels, drawn above the hatches, carry the escaped name.
	std::vector<std::string> Labels;
	for (const pugi::xpath_node& Label : Grids[0].select_nodes(".//g[@class='labels']//text"))
	{
		Labels.push_back(Label.node().child_value());
	}
	EXPECT_NE(std::find(Labels.begin(), Labels.end(), "<b>&\"'\\n"), Labels.end());

	// B shares 36-37 with it: one hatch over those two cells, titled with both.
	const std::vector<pugi::xml_node> Shared = Select("//svg[@class='grid'][1]/g[@class='shared']");
	ASSERT_EQ(Shared.size(), 1u);
	EXPECT_EQ(std::string(Shared[0].child_value("title")), "Channels 36\xE2\x80\x93" "37 claimed by <b>&\"'\\n, B");
	EXPECT_EQ(Attribute(Shared[0].child("rect"), "x"), Attribute(Rects[1], "x") + 3 * ChannelMapCellWidth);
	EXPECT_EQ(Attribute(Shared[0].child("rect"), "width"), 2 * ChannelMapCellWidth - 2);

	// Late runs past 512: outlined as invalid and drawn up to 512; Void has no channels, so no block.
	const pugi::xml_node Late = FindBlock(Grids[0], "Late");
	EXPECT_STREQ(Late.attribute("class").value(), "patch invalid");
	EXPECT_EQ(Attribute(Late.child("rect"), "width"), 3 * ChannelMapCellWidth - 2);
	EXPECT_NE(std::string(Late.child_value("title")).find("\nInvalid: Channels range overflows max channel address (512)"), std::string::npos);
	EXPECT_FALSE(FindBlock(Grids[0], "Void"));
	EXPECT_STREQ(FindBlock(Grids[0], "A").attribute("class").value(), "patch");
}

TEST_F(FChannelMapPageTest, PanelListsSharedInvalidOffGridAndFreeChannels)
{
	const std::vector<pugi::xml_node> Panels = Select("//aside[@class='panel']");
	ASSERT_EQ(Panels.size(), 2u);
	std::vector<std::string> Text;
	for (const pugi::xml_node Node : Panels[0].children())
	{
		Text.push_back(Node.text().get()[0] != '\0' ? Node.text().get() : std::string());
		if (std::string(Node.name()) == "ul")
		{
			std::string Items;
			for (const pugi::xml_node Item : Node.children("li"))
			{
				Items += pugi::xpath_query("string(.)").evaluate_string(Item) + "|";
			}
			Text.back() = Items;
		}
	}
	const std::vector<std::string> Expected = {
		"Shared channels", "36\xE2\x80\x93" "37: <b>&\"'\\n, B|",
		"Invalid patches", "Void (100): 'Void' cannot be assigned as its parent Fixture Type 'Blank' does not define any Modes.|"
			"Late (510\xE2\x80\x93" "513): Channels range overflows max channel address (512)|",
		"Not on the grid", "Void: no channels, starting at 100|",
		"Free channels", "5\xE2\x80\x93" "29, 40\xE2\x80\x93" "509",
	};
	EXPECT_EQ(Text, Expected);

	const std::string Heading = pugi::xpath_query("string(//div[@class='universe'][1]/h3)").evaluate_string(Document);
	EXPECT_EQ(Heading, "Universe 1 \xC2\xB7 17 of 512 channels used \xC2\xB7 495 free \xC2\xB7 5 patches \xC2\xB7 2 invalid \xC2\xB7 2 shared channels");
}

TEST_F(FChannelMapPageTest, ModeTablesListTheMatrixInChannelOrder)
{
	const pugi::xml_node Eight = Document.select_node("//article[h3[starts-with(., 'Eight')]]").node();
	ASSERT_TRUE(Eight);
	std::vector<std::string> Rows;
	for (const pugi::xpath_node& Row : Eight.select_nodes(".//tbody/tr"))
	{
		const bool bMatrix = Row.node().select_node("td[@colspan]") != nullptr;
		Rows.push_back(pugi::xpath_query("string(td[1])").evaluate_string(Row.node()) + " "
			+ (bMatrix ? std::string("matrix") : pugi::xpath_query("string(td[3])").evaluate_string(Row.node())));
	}
	EXPECT_EQ(Rows, (std::vector<std::string>{"1 Dimmer", "2\xE2\x80\x93" "7 matrix", "8 Shutter"}));
}
