//
// EventRecorder.h
//
// A SAX handler that records every event as one line of text, typed
// values included, and keeps a digest of the lines for documents too large
// to compare line by line.
//


#ifndef FastInfoset_EventRecorder_INCLUDED
#define FastInfoset_EventRecorder_INCLUDED


#include "NullHandler.h"
#include "Poco/SAX/ContentHandler.h"
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>


namespace TestSupport {


class EventRecorder: public NullHandler
	/// Lines look like "startElement {urn:p}root p:root {}a[a|CDATA]=1",
	/// "characters text", "int 5", "binaryData 00FF10".
{
public:
	static const std::size_t ALL_LINES = ~std::size_t(0);

	struct Options
	{
		bool comparableText = false;
			/// Leaves out how an XML parser and the Fast Infoset parser
			/// report one document differently: how text is split into
			/// events (it is kept as the writer keeps it, see roundTrip),
			/// where adjacent CDATA sections meet (the writer makes a
			/// section of every characters() call of one, and an XML parser
			/// splits sections at will), the DTD's name, the comments inside
			/// the DTD and entity boundaries.

		bool comparable = false;
			/// comparableText, and what the writer changes on purpose in the
			/// names: unprefixed qualified names, the attributes' qualified
			/// names and types, endPrefixMapping (its order).

		bool roundTrip = false;
			/// Leaves out what differs on purpose between the Fast Infoset
			/// parser's events and those it reports once a writer wrote them
			/// again: prefix mappings and qualified names (the writer
			/// declares and makes up prefixes where it needs them), the
			/// attributes' qualified names and types, CDATA boundaries (text
			/// that a section shares with an earlier chunk goes out as an
			/// index, which carries no algorithm), and absent against empty
			/// public and system identifiers. Text is kept as the writer
			/// keeps it.
			///
			/// Text as the writer keeps it: adjacent character events,
			/// ignorable whitespace included, are one line, cut at their
			/// first zero octet (where characters() ends its text), and
			/// empty text is none; adjacent binary data is one line.

		bool blankQualifiedNames = false;
			/// Every qualified name empty, as a parser reports them with the
			/// namespace-prefixes feature off.

		bool sortAttributes = false;
			/// Lists attributes in name order, as the host's XML writer
			/// prints them.

		std::size_t keptLines = ALL_LINES;
			/// Lines kept beyond the last two; the digest covers every line.
	};

	EventRecorder();
	explicit EventRecorder(Options options);
	~EventRecorder();

	EventRecorder(const EventRecorder&) = delete;
	EventRecorder& operator = (const EventRecorder&) = delete;

	void attachPlainTo(Ixor::XML::XMLReader& reader);
		/// Like attachTo(), but as a plain ContentHandler, to which the
		/// parser reports typed values as text.

	const std::vector<std::string>& lines;
		/// The lines recorded: all of them, or the first keptLines and the
		/// last two.

	std::string text() const;
		/// The lines kept, each ended by a newline; "..." stands for lines
		/// not kept.

	std::string digest() const;
		/// The number of lines and a hash over all of them, "count:hash".

	void add(const std::string& line);
		/// Records a line of the caller's, such as the message of an
		/// exception that ended the parse.

	void clear();
		/// Forgets every line, for the next document.

	// ContentHandler
	void startDocument() override;
	void endDocument() override;
	void startElement(const std::string& uri, const std::string& localName, const std::string& qname, const Ixor::XML::Attributes& attributes) override;
	void endElement(const std::string& uri, const std::string& localName, const std::string& qname) override;
	void characters(const char ch[], int start, int length) override;
	void ignorableWhitespace(const char ch[], int start, int length) override;
	void processingInstruction(const std::string& target, const std::string& data) override;
	void startPrefixMapping(const std::string& prefix, const std::string& uri) override;
	void endPrefixMapping(const std::string& prefix) override;
	void skippedEntity(const std::string& name) override;

	// FISContentHandler
	void binaryData(const char* data, std::size_t length) override;
	void encodedData(short value) override;
	void encodedData(int value) override;
	void encodedData(long value) override;
	void encodedData(bool value) override;
	void encodedData(float value) override;
	void encodedData(double value) override;
	void encodedData(const Ixor::UUID& value) override;

	// LexicalHandler
	void startDTD(const std::string& name, const std::string& publicId, const std::string& systemId) override;
	void endDTD() override;
	void startEntity(const std::string& name) override;
	void endEntity(const std::string& name) override;
	void startCDATA() override;
	void endCDATA() override;
	void comment(const char ch[], int start, int length) override;

	// DTDHandler
	void notationDecl(const std::string& name, const std::string* publicId, const std::string* systemId) override;
	void unparsedEntityDecl(const std::string& name, const std::string* publicId, const std::string& systemId, const std::string& notationName) override;

private:
	class PlainContent;

	bool mergesText() const;
	bool comparesWithXML() const;
	bool leavesOutNameDetails() const;
	void addToRun(const char* kind, const std::string& text);
	void dropLast();
	std::string qualified(const std::string& qname) const;
	std::string identifier(const std::string* pId) const;

	static const std::size_t OPEN_LINES = 2;
		// The last lines may still grow or go: adjacent text joins the last
		// line, and a CDATA section that follows another takes back the
		// "endCDATA" before it. Only older lines are hashed.

	Options                       _options;
	std::vector<std::string>      _lines;
	std::size_t                   _open = 0;       // lines before this one are hashed
	std::size_t                   _count = 0;      // lines recorded, kept or not
	bool                          _dropped = false;
	std::uint64_t                 _hash;
	bool                          _inDTD = false;
	std::unique_ptr<PlainContent> _pPlain;
};


std::string firstDifference(const std::vector<std::string>& expected, const std::vector<std::string>& actual);
	/// Empty when both are equal, else the first line that differs, with its
	/// neighbours: event lists are too long to read whole.


std::vector<std::string> comparableXMLEvents(const std::string& xml, bool stripWhitespace, std::string* pDoctypeName = 0);
	/// The events of XML text as the host's parser reports them, with
	/// namespaces and their prefixes, through the host's whitespace filter
	/// when whitespace is stripped; recorded in the form that survives a
	/// round trip, attributes sorted. That form leaves out the name of the
	/// document type: pDoctypeName, when given, receives it.


std::uint64_t hashOf(const char* data, std::size_t size, std::uint64_t hash = 14695981039346656037ull);
	/// The 64-bit FNV-1a hash of the octets, continuing hash.


} // namespace TestSupport


#endif // FastInfoset_EventRecorder_INCLUDED
