// Writes a document with typed values and reads them back through a
// FISContentHandler: numbers, booleans, UUIDs and binary data travel in
// their binary form, not as text.
//
//   typed_values [output.fi]

#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Poco/NumberFormatter.h"
#include "Poco/SAX/Attributes.h"
#include "Poco/SAX/AttributesImpl.h"
#include <fstream>
#include <iostream>
#include <sstream>


using namespace Ixor::FastInfoset;


class Printer: public FISContentHandler
	/// Prints what arrives. Typed values come one call per value; text still
	/// comes through characters().
{
public:
	void setDocumentLocator(const Ixor::XML::Locator*) {}
	void startDocument() {}
	void endDocument() {}
	void startPrefixMapping(const std::string&, const std::string&) {}
	void endPrefixMapping(const std::string&) {}
	void processingInstruction(const std::string&, const std::string&) {}
	void ignorableWhitespace(const char*, int, int) {}
	void skippedEntity(const std::string&) {}

	void startElement(const std::string&, const std::string& localName, const std::string&, const Ixor::XML::Attributes& attributes)
	{
		std::cout << "<" << localName;
		for (int i = 0; i < attributes.getLength(); ++i)
			std::cout << " " << attributes.getLocalName(i) << "=\"" << attributes.getValue(i) << "\"";
		std::cout << ">";
	}

	void endElement(const std::string&, const std::string& localName, const std::string&)
	{
		std::cout << "</" << localName << ">\n";
	}

	void characters(const char ch[], int start, int length)
	{
		std::cout << "text \"" << std::string(ch + start, length) << "\"";
	}

	void binaryData(const char* data, std::size_t length)
	{
		std::cout << " binary";
		for (std::size_t i = 0; i < length; ++i) std::cout << " " << Ixor::NumberFormatter::formatHex(static_cast<unsigned char>(data[i]), 2);
	}
	void encodedData(short value) { std::cout << " short " << value; }
	void encodedData(int value) { std::cout << " int " << value; }
	void encodedData(long value) { std::cout << " long " << value; }
	void encodedData(bool value) { std::cout << " bool " << (value ? "true" : "false"); }
	void encodedData(float value) { std::cout << " float " << value; }
	void encodedData(double value) { std::cout << " double " << value; }
	void encodedData(const Ixor::UUID& value) { std::cout << " uuid " << value.toString(); }
};


int main(int argc, char** argv)
{
	// Writing: SAX events plus the typed-data calls of FISContentHandler.
	// Consecutive values of one kind become one encoded string.
	std::ostringstream document;
	{
		FastInfosetWriter writer(document);
		writer.startDocument();
		writer.startElement("", "reading", "");

		Ixor::XML::AttributesImpl attributes;
		attributes.addAttribute("", "unit", "unit", "CDATA", "celsius");
		writer.startElement("", "temperatures", "", attributes);
		for (int value: {21, 22, 19, -3}) writer.encodedData(value);
		writer.endElement("", "temperatures", "");

		writer.startElement("", "mean", "");
		writer.encodedData(14.75);
		writer.endElement("", "mean", "");

		writer.startElement("", "calibrated", "");
		writer.encodedData(true);
		writer.endElement("", "calibrated", "");

		writer.startElement("", "sensor", "");
		writer.encodedData(Ixor::UUID("6ba7b810-9dad-11d1-80b4-00c04fd430c8"));
		writer.endElement("", "sensor", "");

		const char raw[] = {'\x00', '\x01', '\x02', '\xFE', '\xFF'};
		writer.startElement("", "raw", "");
		writer.binaryData(raw, sizeof(raw));
		writer.endElement("", "raw", "");

		writer.startElement("", "note", "");
		writer.characters("plain text stays text");
		writer.endElement("", "note", "");

		writer.endElement("", "reading", "");
		writer.endDocument();
	}
	const std::string octets = document.str();
	std::cout << "wrote " << octets.size() << " octets\n";
	if (argc > 1) std::ofstream(argv[1], std::ios::binary) << octets;

	// Reading: a content handler that is a FISContentHandler receives the
	// typed values; any other content handler gets their text form.
	Printer printer;
	FastInfosetParser parser;
	parser.setContentHandler(&printer);
	try
	{
		parser.parseMemoryNP(octets.data(), octets.size());
	}
	catch (const Ixor::Exception& exc)
	{
		std::cerr << exc.displayText() << "\n";
		return 1;
	}
	return 0;
}
