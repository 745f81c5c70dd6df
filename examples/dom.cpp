// Reads a Fast Infoset document into POCO's DOM, changes it, and writes it
// back as Fast Infoset.
//
//   dom [input.fi [output.fi]]
//
// Without an input it makes a small document of its own. The result is read
// once more and printed as XML text.

#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Poco/AutoPtr.h"
#include "Poco/DOM/DOMBuilder.h"
#include "Poco/DOM/DOMSerializer.h"
#include "Poco/DOM/Document.h"
#include "Poco/DOM/Element.h"
#include "Poco/DOM/NodeList.h"
#include "Poco/DOM/Text.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/XMLReader.h"
#include <fstream>
#include <iostream>
#include <sstream>


using Poco::AutoPtr;
using Poco::XML::Document;
using Poco::XML::Element;


namespace
{
	const std::string CATALOG = "urn:example:catalog";


	std::string sampleDocument()
		/// A document as it might arrive: Fast Infoset from XML text.
	{
		std::istringstream xml(
			"<catalog xmlns='urn:example:catalog' xmlns:x='urn:example:extra'>"
			"<book id='b1' x:shelf='3'><title>Old title</title></book>"
			"<book id='b2'><title>Second</title></book>"
			"</catalog>");
		std::ostringstream fi;
		Ixor::FastInfoset::Converter::convertToFIS(xml, fi, 0, 16);
		return fi.str();
	}


	AutoPtr<Document> read(std::istream& fi)
	{
		// The parser is the DOM builder's SAX reader, as POCO's SAXParser
		// is for XML text. External vocabularies stay off: a document from
		// elsewhere must not make the program open files.
		Ixor::FastInfoset::FastInfosetParser parser;
		Poco::XML::DOMBuilder builder(parser);
		Ixor::XML::InputSource source(fi);
		return builder.parse(&source);
	}


	void write(const Document* pDocument, std::ostream& fi)
	{
		// The writer is the serializer's content, lexical and DTD handler,
		// as POCO's XMLWriter is in DOMWriter.
		Ixor::FastInfoset::FastInfosetWriter writer(fi);
		Poco::XML::DOMSerializer serializer;
		serializer.setContentHandler(&writer);
		serializer.setDTDHandler(&writer);
		serializer.setProperty(Ixor::XML::XMLReader::PROPERTY_LEXICAL_HANDLER, static_cast<Ixor::XML::LexicalHandler*>(&writer));
		serializer.serialize(pDocument);
	}


	void change(Document* pDocument)
	{
		Element* pCatalog = pDocument->documentElement();
		AutoPtr<Poco::XML::NodeList> pBooks = pCatalog->getElementsByTagNameNS(CATALOG, "book");
		if (pBooks->length() > 0)
		{
			Element* pFirst = static_cast<Element*>(pBooks->item(0));
			// Attributes are found by their qualified names, prefix and all.
			std::cout << "first book: id " << pFirst->getAttribute("id") << ", shelf " << pFirst->getAttribute("x:shelf") << '\n';
			pFirst->setAttribute("checked", "yes");
			Element* pTitle = pFirst->getChildElementNS(CATALOG, "title");
			if (pTitle && pTitle->firstChild()) pTitle->firstChild()->setNodeValue("New title");
		}
		AutoPtr<Element> pBook = pDocument->createElementNS(CATALOG, "book");
		pBook->setAttribute("id", "b3");
		AutoPtr<Element> pTitle = pDocument->createElementNS(CATALOG, "title");
		AutoPtr<Poco::XML::Text> pText = pDocument->createTextNode("Added");
		pTitle->appendChild(pText);
		pBook->appendChild(pTitle);
		pCatalog->appendChild(pBook);
	}
}


int main(int argc, char** argv)
{
	try
	{
		std::string input;
		if (argc > 1)
		{
			std::ifstream in(argv[1], std::ios::binary);
			if (!in) throw Ixor::FileNotFoundException(argv[1]);
			std::ostringstream content;
			content << in.rdbuf();
			input = content.str();
		}
		else input = sampleDocument();

		std::istringstream fiIn(input);
		AutoPtr<Document> pDocument = read(fiIn);
		change(pDocument);
		std::ostringstream fiOut;
		write(pDocument, fiOut);
		if (argc > 2) std::ofstream(argv[2], std::ios::binary) << fiOut.str();

		std::istringstream written(fiOut.str());
		AutoPtr<Document> pBack = read(written);
		AutoPtr<Poco::XML::NodeList> pBooks = pBack->documentElement()->getElementsByTagNameNS(CATALOG, "book");
		std::cout << input.size() << " octets read, " << fiOut.str().size() << " octets written; "
			<< pBooks->length() << " books now:\n";
		std::istringstream again(fiOut.str());
		Ixor::FastInfoset::Converter::convertToXML(again, std::cout, Ixor::FastInfoset::Converter::END_WITH_NEWLINE);
		return 0;
	}
	catch (const Ixor::Exception& exc)
	{
		std::cerr << "dom: " << exc.displayText() << '\n';
		return 1;
	}
}
