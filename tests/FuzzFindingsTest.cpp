//
// FuzzFindingsTest.cpp
//
// What the fuzz targets found, pinned where a unit test can say it more
// plainly than the input kept in fuzz/corpus/regressions.
//


#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "EventRecorder.h"
#include <gtest/gtest.h>
#include <sstream>


using namespace Ixor::FastInfoset;
using namespace TestSupport;


TEST(FuzzFindingsTest, TypedValuesStayBeforeADocumentTypeDeclaration)
{
	// Typed values wait for the next event of another kind; a document type
	// declaration is one (regressions/roundtrip-typed-value-before-doctype).
	std::ostringstream out;
	{
		FastInfosetWriter writer(out);
		writer.startDocument();
		writer.startElement("", "r", "r");
		writer.encodedData(5);
		writer.startDTD("r", "", "r.dtd");
		writer.endDTD();
		writer.encodedData(6);
		writer.endElement("", "r", "r");
		writer.endDocument();
	}
	EventRecorder recorder;
	FastInfosetParser parser;
	recorder.attachTo(parser);
	const std::string document = out.str();
	parser.parseMemoryNP(document.data(), document.size());
	const std::vector<std::string> expected =
	{
		"startDocument", "startElement {}r ", "int 5", "startDTD  public= system=r.dtd", "endDTD", "int 6", "endElement {}r ", "endDocument"
	};
	EXPECT_EQ(expected, recorder.lines);
}
