//
// TestKitTest.cpp
//
// The event recorder of tests/support: the fuzz targets and the large
// comparisons trust its merged lines and its digest.
//


#include "EventRecorder.h"
#include <gtest/gtest.h>
#include <functional>
#include <memory>
#include <string>


using namespace TestSupport;


namespace {


EventRecorder::Options withOptions(bool comparable, bool roundTrip, std::size_t keptLines)
{
	EventRecorder::Options options;
	options.comparable = comparable;
	options.roundTrip = roundTrip;
	options.keptLines = keptLines;
	return options;
}


} // namespace


TEST(TestKitTest, MergedLinesAndTheDigestDoNotDependOnTheLinesKept)
{
	// A CDATA section that follows another takes back the "endCDATA" before
	// it and its text joins the line before that: the last two lines stay
	// open while older ones are hashed and, past keptLines, dropped.
	struct Case
	{
		const char* what;
		bool comparable;
		bool roundTrip;
		std::function<void(EventRecorder&)> events;
		const char* text;
	};
	const Case cases[] =
	{
		{"adjacent sections", true, false, [](EventRecorder& r)
			{
				r.startDocument();
				r.characters("a", 0, 1); r.characters("b", 0, 1);
				r.startCDATA(); r.characters("c", 0, 1); r.endCDATA();
				r.startCDATA(); r.characters("d", 0, 1); r.endCDATA();
				r.endDocument();
			},
			"startDocument\ncharacters ab\nstartCDATA\ncharacters cd\nendCDATA\nendDocument\n"},
		{"text as the writer keeps it", false, true, [](EventRecorder& r)
			{
				r.characters("a\0b", 0, 3); r.characters("", 0, 0);
				r.startCDATA(); r.characters("c", 0, 1); r.endCDATA();
				r.binaryData("\x01", 1); r.binaryData("\x02", 1);
				r.startPrefixMapping("p", "urn:p"); r.characters("x", 0, 1);
			},
			"characters ac\nbinaryData 0102\ncharacters x\n"},
		{"every event as it comes", false, false, [](EventRecorder& r)
			{
				r.characters("a", 0, 1); r.ignorableWhitespace(" ", 0, 1);
				r.startCDATA(); r.endCDATA(); r.startCDATA(); r.endCDATA();
			},
			"characters a\nignorableWhitespace  \nstartCDATA\nendCDATA\nstartCDATA\nendCDATA\n"},
	};
	for (const Case& c: cases)
	{
		SCOPED_TRACE(c.what);
		EventRecorder all(withOptions(c.comparable, c.roundTrip, EventRecorder::ALL_LINES));
		c.events(all);
		EXPECT_EQ(c.text, all.text());
		for (std::size_t kept: {0, 1})
		{
			EventRecorder some(withOptions(c.comparable, c.roundTrip, kept));
			c.events(some);
			EXPECT_EQ(all.digest(), some.digest()) << kept;
		}
	}
}


TEST(TestKitTest, TheDigestCoversEveryLine)
{
	// Ten lines, one of them changed; with two kept, line 5 is dropped and
	// lines 8 and 9 are still open.
	const auto recorded = [](std::size_t keptLines, int changed, const std::string& text)
	{
		EventRecorder::Options options;
		options.keptLines = keptLines;
		std::unique_ptr<EventRecorder> pRecorder(new EventRecorder(options));
		for (int i = 0; i < 10; ++i) pRecorder->add(i == changed ? text : "line " + std::to_string(i));
		return pRecorder;
	};
	for (int changed: {0, 5, 9})
	{
		SCOPED_TRACE(changed);
		EXPECT_NE(recorded(2, changed, "a")->digest(), recorded(2, changed, "b")->digest());
		EXPECT_EQ(recorded(EventRecorder::ALL_LINES, changed, "a")->digest(), recorded(2, changed, "a")->digest());
	}
	EXPECT_EQ("line 0\nline 1\n...\nline 8\nline 9\n", recorded(2, -1, "")->text());
}
