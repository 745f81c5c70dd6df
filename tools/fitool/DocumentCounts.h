//
// DocumentCounts.h
//
// Tool: fitool
// Module: DocumentCounts
//


#ifndef Fitool_DocumentCounts_INCLUDED
#define Fitool_DocumentCounts_INCLUDED


#include "Poco/SAX/DefaultHandler.h"
#include "Poco/SAX/LexicalHandler.h"
#include "Poco/Types.h"
#include <string>


namespace Fitool {


class DocumentCounts: public Poco::XML::DefaultHandler, public Poco::XML::LexicalHandler
	/// Counts what a parse reports, for `fitool check -v`.
{
public:
	DocumentCounts();
	~DocumentCounts();

	std::string summary() const;
		/// "3 elements, 2 attributes, 120 octets of text, 1 comment,
		/// 0 processing instructions".

	// ContentHandler
	void startElement(const Poco::XML::XMLString& uri, const Poco::XML::XMLString& localName, const Poco::XML::XMLString& qname, const Poco::XML::Attributes& attributes);
	void characters(const Poco::XML::XMLChar ch[], int start, int length);
	void processingInstruction(const Poco::XML::XMLString& target, const Poco::XML::XMLString& data);

	// LexicalHandler
	void startDTD(const Poco::XML::XMLString& name, const Poco::XML::XMLString& publicId, const Poco::XML::XMLString& systemId);
	void endDTD();
	void startEntity(const Poco::XML::XMLString& name);
	void endEntity(const Poco::XML::XMLString& name);
	void startCDATA();
	void endCDATA();
	void comment(const Poco::XML::XMLChar ch[], int start, int length);

private:
	Poco::UInt64 _elements;
	Poco::UInt64 _attributes;
	Poco::UInt64 _textOctets;
	Poco::UInt64 _comments;
	Poco::UInt64 _processingInstructions;
};


} // namespace Fitool


#endif // Fitool_DocumentCounts_INCLUDED
