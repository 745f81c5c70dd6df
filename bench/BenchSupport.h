//
// BenchSupport.h
//
// What the benchmark and the profiling tool share: handlers that do
// nothing, an output buffer that keeps its memory, a compact list of
// recorded SAX events, and one call per measurement.
//


#ifndef FastInfoset_BenchSupport_INCLUDED
#define FastInfoset_BenchSupport_INCLUDED


#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "NullHandler.h"
#include "Poco/SAX/Attributes.h"
#include "Poco/SAX/DTDHandler.h"
#include "Poco/SAX/LexicalHandler.h"
#include "Poco/SAX/SAXParser.h"
#include <cstdint>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>


struct XML_ParserStruct;


namespace Bench {


std::string readFile(const std::string& path);
	/// The whole file; throws Ixor::FileNotFoundException or Ixor::IOException.

bool isFastInfoset(const std::string& data);
	/// Whether data starts like a Fast Infoset document (with or without
	/// the XML declaration that names the "finf" encoding).

std::string encodeFastInfoset(const std::string& xml);
	/// The document as Converter::convertToFIS writes it: map tables,
	/// strings of up to 16 octets indexed, whitespace kept.

std::size_t gzipSize(const std::string& data);
	/// The size of data after gzip at the default level.


struct Counts
	/// What a handler saw; equal counts tell that two parsers read the
	/// whole document.
{
	std::uint64_t elements = 0;
	std::uint64_t characters = 0;
};


class NullHandler: public TestSupport::NullHandler
	/// Receives every event and only counts elements and octets of
	/// character data, so that a parse costs what the parser costs.
{
public:
	Counts counts;

	void startElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname, const Ixor::XML::Attributes& attributes) override;
	void characters(const Ixor::XML::XMLChar ch[], int start, int length) override;
	void ignorableWhitespace(const Ixor::XML::XMLChar ch[], int start, int length) override;
};


class OutputBuffer: private std::streambuf
	/// An output stream into memory that keeps its memory between
	/// documents, so that a writer's measurement does not include
	/// growing a string.
{
public:
	OutputBuffer();

	std::ostream& stream();
	void reset();
		/// Forgets the content and keeps the memory.

	std::size_t size() const;
	std::string str() const;

private:
	int_type overflow(int_type c);
	std::streamsize xsputn(const char* s, std::streamsize n);
	void grow(std::size_t needed);

	std::string  _buffer;
	std::ostream _stream;
};


class EventList
	/// The SAX events of one document as the host's SAXParser reports them
	/// with namespaces and namespace prefixes on (adjacent character data
	/// joined into one event, as convertToFIS joins it for its writer),
	/// kept compactly so that replaying them costs little more than the
	/// virtual calls.
	///
	/// Names and attribute values are stored once each and handed out as
	/// references; character data is one block of memory.
{
public:
	EventList();
	~EventList();

	void record(const std::string& xml);
		/// Parses xml and keeps its events; throws what the parser throws.

	void replay(Ixor::XML::ContentHandler& content, Ixor::XML::LexicalHandler* pLexical, Ixor::XML::DTDHandler* pDTD) const;
		/// Sends the events to the handlers; a null handler misses its events.

	std::size_t eventCount() const;
	std::size_t memoryUsed() const;
		/// Octets held, approximately.

private:
	friend class EventRecorder;

	enum Kind: std::uint8_t
	{
		START_DOCUMENT, END_DOCUMENT, START_ELEMENT, END_ELEMENT,
		CHARACTERS, IGNORABLE_WHITESPACE, PROCESSING_INSTRUCTION,
		START_PREFIX_MAPPING, END_PREFIX_MAPPING, SKIPPED_ENTITY,
		START_DTD, END_DTD, START_ENTITY, END_ENTITY, START_CDATA, END_CDATA, COMMENT,
		NOTATION_DECL, UNPARSED_ENTITY_DECL
	};

	static const std::uint32_t NONE = 0xFFFFFFFF;

	struct Event
	{
		Kind kind;
		std::uint32_t a, b, c, d;
	};

	struct Name
		/// Namespace URI, local name and qualified name, as string ids.
	{
		std::uint32_t uri, localName, qname;
	};

	struct Attribute
	{
		std::uint32_t name, type, value;
	};

	class RecordedAttributes;

	std::vector<Event>       _events;
	std::vector<std::string> _strings;
	std::vector<Name>        _names;
	std::vector<Attribute>   _attributes;
	std::string              _text;
};


class ExpatParser
	/// Raw expat with namespace processing, every content callback set
	/// to nothing but counting. Reused between documents.
{
public:
	ExpatParser();
	~ExpatParser();

	void parse(const char* data, std::size_t size);
		/// Throws Ixor::XML::XMLException on a malformed document.

	Counts counts;

private:
	ExpatParser(const ExpatParser&);
	ExpatParser& operator = (const ExpatParser&);

	void setHandlers();

	XML_ParserStruct* _parser;
};


class LibXml2Parser
	/// libxml2's SAX2 parser with no-op callbacks that count.
{
public:
	LibXml2Parser();

	void parse(const char* data, std::size_t size);
		/// Throws Ixor::XML::XMLException on a malformed document.

	Counts counts;
};


//
// One document through each measured path
//
void parseFastInfoset(Ixor::FastInfoset::FastInfosetParser& parser, const std::string& fi);
	/// The parser has its handlers already.
void parseXML(Ixor::XML::SAXParser& parser, const std::string& xml);
void writeFastInfoset(const EventList& events, OutputBuffer& out);
	/// A fresh FastInfosetWriter set up as convertToFIS sets up its own.
void writeFastInfoset(const EventList& events, OutputBuffer& out, const Ixor::FastInfoset::DocumentVocabulary& vocabulary);
	/// The same writer naming vocabulary as its external vocabulary, by its URI.
void writeXML(const EventList& events, OutputBuffer& out);
	/// A fresh host XMLWriter without options.
void convertToFastInfoset(const std::string& xml, OutputBuffer& out);
void convertToXML(const std::string& fi, OutputBuffer& out);
	/// Both read from a memory stream over the string.

std::vector<std::string> vocabularySamples(const std::string& documentPath);
	/// The samples of the document's kind: the XML files in
	/// vocabulary/NAME/ beside it (NAME: the document's file name without
	/// .xml), sorted; none when there is no such folder.

std::string buildVocabulary(const std::vector<std::string>& samplePaths, const std::string& uri);
	/// A VocabularyBuilder with its defaults over the samples, saved as a
	/// vocabulary document: what a user would ship.

void setUpFastInfosetParser(Ixor::FastInfoset::FastInfosetParser& parser, NullHandler& handler);
void setUpXMLParser(Ixor::XML::SAXParser& parser, NullHandler& handler);
	/// Namespaces and namespace prefixes on, as Converter::convertToFIS.


//
// inlines
//
inline std::ostream& OutputBuffer::stream()
{
	return _stream;
}


inline std::size_t OutputBuffer::size() const
{
	return static_cast<std::size_t>(pptr() - pbase());
}


inline std::size_t EventList::eventCount() const
{
	return _events.size();
}


} // namespace Bench


#endif // FastInfoset_BenchSupport_INCLUDED
