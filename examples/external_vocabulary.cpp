// Prepares an external vocabulary and writes and reads documents against it.
//
// Documents of one kind share most names and many strings. A vocabulary
// document, an ordinary XML (or Fast Infoset) document published under a
// URI, holds them once; each document then names the URI and writes only
// small indexes for what the vocabulary knows.
//
//   external_vocabulary [folder]

#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Poco/File.h"
#include "Poco/NullStream.h"
#include "Poco/Path.h"
#include "Poco/SAX/DefaultHandler.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/SAXParser.h"
#include "Poco/TemporaryFile.h"
#include <fstream>
#include <iostream>
#include <sstream>


using namespace Ixor::FastInfoset;
using Ixor::XML::XMLReader;


namespace {


const std::string VOCABULARY_XML =
	"<order xmlns='urn:example:orders'>"
	"<customer country='DE' status='regular'/>"
	"<line sku='' quantity='' currency='EUR'/>"
	"<total currency='EUR'/>"
	"</order>";

const std::string ORDER_XML =
	"<order xmlns='urn:example:orders'>"
	"<customer country='DE' status='regular'>Ada</customer>"
	"<line sku='A-100' quantity='2' currency='EUR'>19.90</line>"
	"<line sku='B-200' quantity='1' currency='EUR'>5.00</line>"
	"<total currency='EUR'>44.80</total>"
	"</order>";


void feed(const std::string& xml, FastInfosetWriter& writer)
	/// Sends XML text through the host's parser into writer, wired the way
	/// the library loads XML vocabulary documents.
{
	Ixor::XML::SAXParser parser;
	parser.setFeature(XMLReader::FEATURE_NAMESPACES, true);
	parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
	parser.setContentHandler(&writer);
	parser.setDTDHandler(&writer);
	parser.setProperty(XMLReader::PROPERTY_LEXICAL_HANDLER, static_cast<Ixor::XML::LexicalHandler*>(&writer));
	std::istringstream in(xml);
	Ixor::XML::InputSource source(in);
	parser.parse(&source);
}


std::string writeOrder(const DocumentVocabulary* pVocabulary)
	/// The order as Fast Infoset, against the vocabulary when one is given.
{
	std::ostringstream out;
	if (pVocabulary)
	{
		FastInfosetWriter writer(out, false, *pVocabulary);
		writer.setExternalVocabulary(pVocabulary->getURI(), *pVocabulary);
		feed(ORDER_XML, writer);
	}
	else
	{
		FastInfosetWriter writer(out);
		feed(ORDER_XML, writer);
	}
	return out.str();
}


} // namespace


int main(int argc, char** argv)
{
	const std::string folder = argc > 1 ? argv[1] : Poco::Path::temp();
	// The URI under which the vocabulary is published; here a file path. A
	// path that ends in ".xml" is loaded as XML, anything else as Fast
	// Infoset.
	const std::string uri = Poco::Path(folder).append("orders-vocabulary.xml").toString();
	try
	{
		// 1. Publish the vocabulary document.
		std::ofstream(uri, std::ios::binary) << VOCABULARY_XML;

		// 2. Prepare the same vocabulary in memory: a writer that writes
		//    nowhere collects the names and strings in the order a parser
		//    that loads the document will. The vocabulary carries the URI.
		Poco::NullOutputStream nowhere;
		FastInfosetWriter collector(nowhere, false, DocumentVocabulary(uri, DocumentVocabulary::VOC_HASH));
		feed(VOCABULARY_XML, collector);
		const DocumentVocabulary& vocabulary = collector.getDocumentVocabulary();

		// 3. Write a document against it, and one without it for comparison.
		const std::string withVocabulary = writeOrder(&vocabulary);
		const std::string without = writeOrder(0);
		std::cout << "order without vocabulary: " << without.size() << " octets, against the vocabulary: "
			<< withVocabulary.size() << " octets\n";

		// 4. Read it. A parser allowed to load external vocabularies opens
		//    the URI and loads the vocabulary itself.
		Ixor::XML::DefaultHandler handler;
		FastInfosetParser loading;
		loading.setLoadExternalVocabularies(true);
		loading.setContentHandler(&handler);
		loading.parseMemoryNP(withVocabulary.data(), withVocabulary.size());
		std::cout << "read with the vocabulary loaded from " << uri << "\n";

		// A parser given the vocabulary in advance never opens the URI.
		FastInfosetParser prepared(vocabulary);
		prepared.setContentHandler(&handler);
		prepared.parseMemoryNP(withVocabulary.data(), withVocabulary.size());
		std::cout << "read with the vocabulary given in advance\n";

		// By default a parser refuses to open what documents name.
		FastInfosetParser cautious;
		try
		{
			cautious.parseMemoryNP(withVocabulary.data(), withVocabulary.size());
			std::cerr << "the cautious parser loaded the vocabulary\n";
			return 1;
		}
		catch (const FISException& exc)
		{
			std::cout << "refused: " << exc.displayText() << "\n";
		}
		Poco::File(uri).remove();
		return 0;
	}
	catch (const Ixor::Exception& exc)
	{
		std::cerr << exc.displayText() << "\n";
		return 1;
	}
}
