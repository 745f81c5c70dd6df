//
// SeedWriter.cpp
//
// Writes the seed documents of the fuzz corpus:
//
//   FuzzSeeds TEST-DATA-DIRECTORY OUTPUT-DIRECTORY
//
// - every XML file of the test data, as the converter writes it, with and
//   without ignorable whitespace;
// - documents written through FastInfosetWriter with the items that the
//   test data lacks (typed values, notations, an initial vocabulary, ...);
// - documents put together bit by bit with what the writer never writes
//   (restricted alphabets, UTF-16, the hexadecimal algorithm, additional
//   data, name surrogates, entity references, ...).
//
// Every seed must parse; the program fails otherwise.
//


#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "DocumentBits.h"
#include "NullHandler.h"
#include "TestSupport.h"
#include "Poco/File.h"
#include "Poco/Path.h"
#include "Poco/SAX/AttributesImpl.h"
#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>


using namespace Ixor::FastInfoset;
using TestSupport::DocumentBits;


namespace {


std::string outputDirectory;
int failures = 0;


void save(const std::string& name, const std::string& octets)
{
	try
	{
		TestSupport::NullHandler handler;
		FastInfosetParser parser;
		parser.setLoadExternalVocabularies(false);
		handler.attachTo(parser);
		parser.parseMemoryNP(octets.data(), octets.size());
	}
	catch (const Ixor::Exception& exc)
	{
		std::cerr << name << ": does not parse: " << exc.displayText() << "\n";
		++failures;
	}
	std::ofstream(Poco::Path(outputDirectory, name).toString(), std::ios::binary) << octets;
}


std::string written(bool xmlDeclaration, const std::function<void(FastInfosetWriter&)>& events)
{
	std::ostringstream out;
	{
		FastInfosetWriter writer(out, xmlDeclaration, DocumentVocabulary::VOC_MAP);
		events(writer);
	}
	return out.str();
}


void writerSeeds()
{
	save("typed-values.fi", written(false, [](FastInfosetWriter& w)
	{
		w.startDocument();
		w.startElement("", "values", "values");
		w.startElement("", "s", ""); w.encodedData(short(-2)); w.encodedData(short(300)); w.endElement("", "s", "");
		w.startElement("", "i", ""); w.encodedData(-70000); w.endElement("", "i", "");
		w.startElement("", "l", ""); w.encodedData(1L << 40); w.endElement("", "l", "");
		w.startElement("", "b", ""); w.encodedData(true); w.encodedData(false); w.encodedData(true); w.endElement("", "b", "");
		w.startElement("", "f", ""); w.encodedData(1.5f); w.encodedData(-0.0f); w.endElement("", "f", "");
		w.startElement("", "d", ""); w.encodedData(3.25); w.endElement("", "d", "");
		w.startElement("", "u", ""); w.encodedData(Ixor::UUID("6ba7b810-9dad-11d1-80b4-00c04fd430c8")); w.endElement("", "u", "");
		w.startElement("", "x", ""); w.binaryData("\x00\x01\xfe\xff", 4); w.endElement("", "x", "");
		w.endElement("", "values", "values");
		w.endDocument();
	}));

	save("declarations.fi", written(true, [](FastInfosetWriter& w)
	{
		const std::string publicId("-//Seed//EN");
		const std::string systemId("seed.dtd");
		w.notationDecl("gif", &publicId, &systemId);
		w.notationDecl("png", 0, &systemId);
		w.unparsedEntityDecl("logo", &publicId, "logo.gif", "gif");
		w.unparsedEntityDecl("icon", 0, "icon.png", "png");
		w.startDocument();
		w.startDTD("doc", publicId, systemId);
		w.processingInstruction("in-dtd", "data");
		w.endDTD();
		w.comment("a comment", 0, 9);
		w.processingInstruction("target", "instruction");
		w.startPrefixMapping("", "urn:default");
		w.startPrefixMapping("p", "urn:p");
		Ixor::XML::AttributesImpl attributes;
		attributes.addAttribute("urn:p", "a", "p:a", "CDATA", "same");
		attributes.addAttribute("", "b", "b", "CDATA", "same");
		attributes.addAttribute("urn:q", "c", "", "CDATA", "other");
		w.startElement("urn:default", "doc", "doc", attributes);
		w.startElement("urn:p", "child", "p:child", attributes);
		w.characters("text");
		w.startCDATA();
		w.characters("<cdata>");
		w.endCDATA();
		w.characters("text");
		w.comment("a comment", 0, 9);
		w.endElement("urn:p", "child", "p:child");
		w.emptyElement("urn:p", "child", "p:child");
		w.emptyElement("urn:r", "generated", "");
		w.endElement("urn:default", "doc", "doc");
		w.endPrefixMapping("p");
		w.endPrefixMapping("");
		w.endDocument();
	}));

	// What a vocabulary holds beforehand goes out as the initial vocabulary.
	DocumentVocabulary vocabulary(DocumentVocabulary::VOC_MAP);
	bool found = false;
	vocabulary.index(DocumentVocabulary::PREFIX, "v", found);
	vocabulary.index(DocumentVocabulary::NAMESPACE_NAME, "urn:v", found);
	vocabulary.index(DocumentVocabulary::LOCAL_NAME, "known", found);
	vocabulary.index(DocumentVocabulary::OTHER_NCNAME, "pi", found);
	vocabulary.index(DocumentVocabulary::OTHER_URI, "file.dtd", found);
	vocabulary.restrictedAlphabets().add("0123456789abcdef");
	std::ostringstream out;
	{
		FastInfosetWriter w(out, false, vocabulary);
		w.startDocument();
		w.startElement("urn:v", "known", "v:known");
		w.processingInstruction("pi", "x");
		w.emptyElement("urn:v", "known", "v:known");
		w.endElement("urn:v", "known", "v:known");
		w.endDocument();
	}
	save("initial-vocabulary.fi", out.str());
}


void bitSeeds()
{
	// Additional data, character encoding scheme, standalone and version.
	save("header-parts.fi", DocumentBits().header()
		.bits(0x47, 7)                                  // additional data, scheme, standalone, version
		.sequence(1).bits(0, 1).string("id").bits(0, 1).string("data")
		.bits(0, 1).string("UTF-8")
		.bits(0, 7).bits(1, 1)
		.bits(0, 2).bits(0, 2).string("1.0")            // version: literal UTF-8 at bit 2
		.bits(0, 2).bits(0xF, 4).bits(0, 2).literal("e")  // element "e" without attributes
		.bits(0xFF, 8)
		.done());

	// Content in every encoding: restricted alphabets 1 and 2, UTF-16, the
	// hexadecimal algorithm, a literal added to the table and its index.
	save("encodings.fi", DocumentBits().header().bits(0, 7)
		.bits(0, 2).bits(0xF, 4).bits(0, 2).literal("e")
		.bits(2, 2).bits(0, 1).bits(0, 1).bits(2, 2).integer(1).string(std::string("\x01\x23\x4f", 3))       // numeric alphabet
		.bits(2, 2).bits(0, 1).bits(0, 1).bits(2, 2).integer(2).string(std::string("\x12\x3d\x4f", 3))       // date and time alphabet
		.bits(2, 2).bits(0, 1).bits(1, 1).bits(1, 2).string(std::string("\x00h\x00i", 4))                   // UTF-16, added to the table
		.bits(2, 2).bits(1, 1).integer(1)                                                                   // the same chunk by index
		.bits(2, 2).bits(0, 1).bits(0, 1).bits(3, 2).integer(1).string(std::string("\xca\xfe", 2))           // hexadecimal
		.bits(0xE2, 8).bits(0, 1).bits(0, 1).bits(0, 2).string("comment")
		.bits(0xFF, 8)
		.done());

	// Namespace attributes, attributes with values added and indexed, an
	// element name by index and an unexpanded entity reference.
	save("attributes.fi", DocumentBits().header().bits(0, 7)
		.bits(0, 1).bits(1, 1)                           // element with attributes
		.bits(0x38, 6)                                   // namespace attributes follow
		.bits(0x33, 6).bits(3, 2).literal("p").literal("urn:p")
		.bits(0x33, 6).bits(1, 2).bits(1, 1).integer(2)  // the default namespace, by index
		.bits(0xF, 4).bits(0, 6)
		.bits(0xF, 4).bits(3, 2).bits(1, 1).integer(2).bits(1, 1).integer(2).literal("e")   // p:e by indexes
		.bits(0, 1).bits(0x1E, 5).bits(0, 2).literal("a").bits(0, 1).bits(1, 1).bits(0, 2).string("v")
		.bits(0, 1).integer(1).bits(1, 1).integer(1)     // attribute 1 again, value 1 by index
		.bits(0xF, 4).bits(0, 4)
		.bits(0x32, 6).bits(0, 2).literal("entity")      // unexpanded entity reference
		.bits(0, 2).integer(1).pad()                     // element 1 again, empty
		.bits(0xF, 4).bits(0xF, 4)
		.bits(0xF0, 8)
		.done());

	// An initial vocabulary with tables the writer never writes: encoded
	// strings and name surrogates.
	save("name-surrogates.fi", DocumentBits().header().bits(0x20, 7)
		.bits(0, 3).bits(0x0897, 13)                     // alphabets, local names, attribute values, other strings, element and attribute names
		.sequence(1).bits(0, 1).string("xyz")
		.sequence(2).bits(0, 1).string("root").bits(0, 1).string("attr")
		.sequence(1).bits(0, 2).bits(0, 2).string("value")
		.sequence(1).bits(0, 2).bits(0, 2).string("other")
		.sequence(1).bits(0, 6).bits(0, 2).bits(0, 1).integer(1)
		.sequence(1).bits(0, 6).bits(0, 2).bits(0, 1).integer(2)
		.bits(0, 1).bits(1, 1).integer(1)               // element 1 with attributes
		.bits(0, 1).integer(1).bits(1, 1).integer(1)    // attribute 1 with value 1
		.bits(0xF, 4).bits(0xF, 4)
		.bits(0xE2, 8).bits(1, 1).integer(1)            // comment: other string 1
		.bits(0xF0, 8)
		.done());
}


void testDataSeeds(const std::string& directory)
{
	for (const std::string& path: TestSupport::xmlFilesIn(directory))
	{
		for (int options: {0, 1})
		{
			std::ifstream in(path, std::ios::binary);
			std::ostringstream out;
			Converter::convertToFIS(in, out, options, 16);
			save(Poco::Path(path).getBaseName() + (options ? "-stripped.fi" : ".fi"), out.str());
		}
	}
}


} // namespace


int main(int argc, char** argv)
{
	if (argc != 3)
	{
		std::cerr << "usage: " << argv[0] << " TEST-DATA-DIRECTORY OUTPUT-DIRECTORY\n";
		return 2;
	}
	try
	{
		outputDirectory = argv[2];
		Poco::File(outputDirectory).createDirectories();
		testDataSeeds(argv[1]);
		writerSeeds();
		bitSeeds();
	}
	catch (const Ixor::Exception& exc)
	{
		std::cerr << exc.displayText() << "\n";
		return 1;
	}
	return failures == 0 ? 0 : 1;
}
