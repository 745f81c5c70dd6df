//
// EventRecorder.h
//
// A SAX handler for the tests that records every event as one line of text,
// typed values included.
//


#ifndef FastInfoset_EventRecorder_INCLUDED
#define FastInfoset_EventRecorder_INCLUDED


#include "Ixor/FastInfoset/FISContentHandler.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Poco/NumberFormatter.h"
#include "Poco/SAX/Attributes.h"
#include "Poco/SAX/DTDHandler.h"
#include "Poco/SAX/LexicalHandler.h"
#include "Poco/SAX/XMLReader.h"
#include "Poco/UUID.h"
#include <algorithm>
#include <sstream>
#include <string>
#include <vector>


namespace TestSupport {


class EventRecorder: public Ixor::FastInfoset::FISContentHandler, public Ixor::XML::LexicalHandler, public Ixor::XML::DTDHandler
{
public:
	struct Options
	{
		bool comparable = false;
			/// Leaves out what differs on purpose between an XML parser and
			/// the Fast Infoset parser: unprefixed qualified names, the
			/// order of endPrefixMapping, the DTD's name and the comments
			/// inside it. Adjacent character events become one line, adjacent
			/// CDATA sections one section.

		bool sortAttributes = false;
			/// Lists attributes in name order, as the host's XML writer
			/// prints them.
	};

	EventRecorder() {}
	explicit EventRecorder(Options options): _options(options) {}

	std::vector<std::string> lines;

	void attachTo(Ixor::XML::XMLReader& reader)
	{
		reader.setContentHandler(this);
		reader.setDTDHandler(this);
		reader.setProperty(Ixor::XML::XMLReader::PROPERTY_LEXICAL_HANDLER, static_cast<Ixor::XML::LexicalHandler*>(this));
	}

	std::string text() const
	{
		std::string all;
		for (const std::string& line: lines) all += line + "\n";
		return all;
	}

	// ContentHandler
	void setDocumentLocator(const Ixor::XML::Locator*) {}
	void startDocument() { add("startDocument"); }
	void endDocument() { add("endDocument"); }

	void startElement(const std::string& uri, const std::string& localName, const std::string& qname, const Ixor::XML::Attributes& attributes)
	{
		std::string line = "startElement {" + uri + "}" + localName + " " + qualified(qname);
		std::vector<std::string> items;
		for (int i = 0; i < attributes.getLength(); ++i)
		{
			std::string item = " {" + attributes.getURI(i) + "}" + attributes.getLocalName(i);
			if (!_options.comparable) item += "[" + attributes.getQName(i) + "|" + attributes.getType(i) + "]";
			items.push_back(item + "=" + attributes.getValue(i));
		}
		if (_options.sortAttributes) std::sort(items.begin(), items.end());
		for (const std::string& item: items) line += item;
		add(line);
	}

	void endElement(const std::string& uri, const std::string& localName, const std::string& qname)
	{
		add("endElement {" + uri + "}" + localName + " " + qualified(qname));
	}

	void characters(const char ch[], int start, int length)
	{
		std::string text(ch + start, length);
		if (_options.comparable && !lines.empty() && lines.back().compare(0, 11, "characters ") == 0)
			lines.back() += text;
		else add("characters " + text);
	}

	void ignorableWhitespace(const char ch[], int start, int length) { characters(ch, start, length); }
	void processingInstruction(const std::string& target, const std::string& data) { add("pi " + target + " " + data); }
	void startPrefixMapping(const std::string& prefix, const std::string& uri) { add("startPrefixMapping " + prefix + "=" + uri); }
	void endPrefixMapping(const std::string& prefix) { if (!_options.comparable) add("endPrefixMapping " + prefix); }
	void skippedEntity(const std::string& name) { add("skippedEntity " + name); }

	// FISContentHandler
	void binaryData(const char* data, std::size_t length)
	{
		std::string hex;
		for (std::size_t i = 0; i < length; ++i) hex += Poco::NumberFormatter::formatHex(static_cast<unsigned char>(data[i]), 2);
		add("binaryData " + hex);
	}
	void encodedData(short value) { add("short " + std::to_string(value)); }
	void encodedData(int value) { add("int " + std::to_string(value)); }
	void encodedData(long value) { add("long " + std::to_string(value)); }
	void encodedData(bool value) { add(std::string("bool ") + (value ? "true" : "false")); }
	void encodedData(float value) { std::ostringstream s; s.precision(9); s << value; add("float " + s.str()); }
	void encodedData(double value) { std::ostringstream s; s.precision(17); s << value; add("double " + s.str()); }
	void encodedData(const Ixor::UUID& value) { add("uuid " + value.toString()); }

	// LexicalHandler
	void startDTD(const std::string& name, const std::string& publicId, const std::string& systemId)
	{
		_inDTD = true;
		add("startDTD " + (_options.comparable ? std::string() : name) + " public=" + publicId + " system=" + systemId);
	}
	void endDTD() { _inDTD = false; add("endDTD"); }
	void startEntity(const std::string& name) { if (!_options.comparable) add("startEntity " + name); }
	void endEntity(const std::string& name) { if (!_options.comparable) add("endEntity " + name); }
	void startCDATA()
	{
		// The writer makes one CDATA chunk of every characters() call of a
		// section, and an XML parser splits sections at will: adjacent
		// sections compare as one.
		if (_options.comparable && !lines.empty() && lines.back() == "endCDATA") lines.pop_back();
		else add("startCDATA");
	}
	void endCDATA() { add("endCDATA"); }
	void comment(const char ch[], int start, int length)
	{
		if (_options.comparable && _inDTD) return;
		add("comment " + std::string(ch + start, length));
	}

	// DTDHandler
	void notationDecl(const std::string& name, const std::string* publicId, const std::string* systemId)
	{
		add("notation " + name + " public=" + (publicId ? *publicId : "(null)") + " system=" + (systemId ? *systemId : "(null)"));
	}
	void unparsedEntityDecl(const std::string& name, const std::string* publicId, const std::string& systemId, const std::string& notationName)
	{
		add("unparsedEntity " + name + " public=" + (publicId ? *publicId : "(null)") + " system=" + systemId + " notation=" + notationName);
	}

private:
	void add(const std::string& line) { lines.push_back(line); }

	std::string qualified(const std::string& qname) const
	{
		if (_options.comparable && qname.find(':') == std::string::npos) return std::string();
		return qname;
	}

	Options _options;
	bool _inDTD = false;
};


inline std::string firstDifference(const std::vector<std::string>& expected, const std::vector<std::string>& actual)
	/// Empty when both are equal, else the first line that differs, with its
	/// neighbours: event lists are too long to read whole.
{
	std::size_t i = 0;
	while (i < expected.size() && i < actual.size() && expected[i] == actual[i]) ++i;
	if (i == expected.size() && i == actual.size()) return std::string();
	std::string report = "line " + std::to_string(i) + "\n";
	for (std::size_t j = i > 2 ? i - 2 : 0; j < i + 3; ++j)
	{
		report += "  expected: " + (j < expected.size() ? expected[j].substr(0, 200) : std::string("(end)")) + "\n";
		report += "  actual:   " + (j < actual.size() ? actual[j].substr(0, 200) : std::string("(end)")) + "\n";
	}
	return report;
}


} // namespace TestSupport


#endif // FastInfoset_EventRecorder_INCLUDED
