//
// FuzzFindingsTest.cpp
//
// What the fuzz targets found, pinned where a unit test can say it more
// plainly than the input kept in fuzz/corpus/regressions.
//


#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "EventRecorder.h"
#include "Reading.h"
#include "TestSupport.h"
#include <gtest/gtest.h>


using namespace Ixor::FastInfoset;
using namespace TestSupport;


TEST(FuzzFindingsTest, TypedValuesStayBeforeADocumentTypeDeclaration)
{
	// Typed values wait for the next event of another kind; a document type
	// declaration is one (regressions/roundtrip-typed-value-before-doctype).
	const std::string document = writeDocument([](FastInfosetWriter& writer)
	{
		writer.startDocument();
		writer.startElement("", "r", "r");
		writer.encodedData(5);
		writer.startDTD("r", "", "r.dtd");
		writer.endDTD();
		writer.encodedData(6);
		writer.endElement("", "r", "r");
		writer.endDocument();
	});
	EventRecorder recorder;
	FastInfosetParser parser;
	recorder.attachTo(parser);
	parser.parseMemoryNP(document.data(), document.size());
	const std::vector<std::string> expected =
	{
		"startDocument", "startElement {}r r", "int 5", "startDTD  public= system=r.dtd", "endDTD", "int 6", "endElement {}r r", "endDocument"
	};
	EXPECT_EQ(expected, recorder.lines);
}


TEST(FuzzFindingsTest, AttributeValuesOutsideTheTableOutliveMoreAttributes)
{
	// Values that are not added to the table are copies; an element with more
	// attributes than the list holds at first moved them (regressions/
	// attribute-values-outside-the-table, found under AddressSanitizer).
	std::string document = fromHex("e0 00 00 01 00 7c 00") + "r";
	std::string expected = "startElement {}r r";
	for (char name = 'a'; name <= 'z'; ++name)
	{
		const std::string value = std::string("v") + name + name + name;
		document += fromHex("78 00") + name + fromHex("03") + value;
		expected += std::string(" {}") + name + "[" + name + "|CDATA]=" + value;
	}
	document += fromHex("ff f0");
	for (Reading reading: READINGS)
	{
		SCOPED_TRACE(testing::Message() << reading);
		EventRecorder recorder;
		FastInfosetParser parser;
		recorder.attachTo(parser);
		Input(document, reading).parse(parser);
		ASSERT_EQ(4u, recorder.lines.size());
		EXPECT_EQ(expected, recorder.lines[1]);
	}
}
