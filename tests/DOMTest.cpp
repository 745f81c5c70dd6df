//
// DOMTest.cpp
//
// The host's DOM both ways: its DOMBuilder on FastInfosetParser builds the
// document its DOMParser builds from the XML text, and its DOMSerializer
// into a FastInfosetWriter writes a document that builds the same tree
// again.
//


#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "EventRecorder.h"
#include "TestSupport.h"
#include "Poco/AutoPtr.h"
#include "Poco/DOM/Attr.h"
#include "Poco/DOM/DOMBuilder.h"
#include "Poco/DOM/DOMParser.h"
#include "Poco/DOM/DOMSerializer.h"
#include "Poco/DOM/Document.h"
#include "Poco/DOM/DocumentType.h"
#include "Poco/DOM/Element.h"
#include "Poco/DOM/NamedNodeMap.h"
#include "Poco/DOM/ProcessingInstruction.h"
#include "Poco/DOM/Text.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/XMLReader.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <fstream>
#include <sstream>


using namespace Ixor::FastInfoset;
using namespace TestSupport;
using Poco::AutoPtr;
using Poco::XML::Node;


namespace {


std::vector<std::string> dataFiles()
{
	return xmlFilesIn(FASTINFOSET_TEST_DATA);
}


class TreeLines
	/// A DOM tree as one line per node, in document order, for comparing
	/// two trees: node types, names with their prefixes, namespace URIs,
	/// attributes (and whether getAttribute() and getAttributeNS() find
	/// them), text, comments and processing instructions.
	///
	/// Adjacent text and CDATA sections make one text line: how text is cut,
	/// and which of it is marked CDATA, is not kept by every reader. The
	/// document type's name is left out, since Fast Infoset does not carry
	/// it.
{
public:
	explicit TreeLines(const Node* pDocument)
	{
		walk(pDocument, 0);
		flushText();
	}

	std::vector<std::string> lines;

private:
	void walk(const Node* pNode, int depth)
	{
		for (const Node* pChild = pNode->firstChild(); pChild; pChild = pChild->nextSibling())
		{
			const unsigned short type = pChild->nodeType();
			if (type == Node::TEXT_NODE || type == Node::CDATA_SECTION_NODE)
			{
				_text += pChild->nodeValue();
				continue;
			}
			flushText();
			_depth = depth;
			const std::string indent(2 * depth, ' ');
			switch (type)
			{
			case Node::ELEMENT_NODE:
				lines.push_back(indent + "element " + names(pChild));
				attributes(static_cast<const Poco::XML::Element*>(pChild), indent);
				walk(pChild, depth + 1);
				flushText();
				break;
			case Node::COMMENT_NODE:
				lines.push_back(indent + "comment \"" + pChild->nodeValue() + "\"");
				break;
			case Node::PROCESSING_INSTRUCTION_NODE:
				lines.push_back(indent + "pi " + pChild->nodeName() + " \"" + pChild->nodeValue() + "\"");
				break;
			case Node::DOCUMENT_TYPE_NODE:
			{
				const Poco::XML::DocumentType* pType = static_cast<const Poco::XML::DocumentType*>(pChild);
				lines.push_back(indent + "doctype public \"" + pType->publicId() + "\" system \"" + pType->systemId() + "\"");
				break;
			}
			default:
				lines.push_back(indent + "node of type " + std::to_string(type) + " " + pChild->nodeName());
			}
		}
		_depth = depth;
	}

	void attributes(const Poco::XML::Element* pElement, const std::string& indent)
	{
		AutoPtr<Poco::XML::NamedNodeMap> pAttributes = pElement->attributes();
		std::vector<std::string> sorted;
		for (unsigned long i = 0; i < pAttributes->length(); ++i)
		{
			const Poco::XML::Attr* pAttr = static_cast<const Poco::XML::Attr*>(pAttributes->item(i));
			std::string line = indent + "  @" + names(pAttr) + " = \"" + pAttr->value() + "\"";
			if (pElement->getAttribute(pAttr->nodeName()) != pAttr->value()) line += " (getAttribute misses it)";
			if (!pAttr->localName().empty() && pElement->getAttributeNS(pAttr->namespaceURI(), pAttr->localName()) != pAttr->value())
				line += " (getAttributeNS misses it)";
			sorted.push_back(line);
		}
		std::sort(sorted.begin(), sorted.end());
		lines.insert(lines.end(), sorted.begin(), sorted.end());
	}

	static std::string names(const Node* pNode)
	{
		return pNode->nodeName() + " {" + pNode->namespaceURI() + "} local " + pNode->localName();
	}

	void flushText()
	{
		if (_text.empty()) return;
		lines.push_back(std::string(2 * _depth, ' ') + "text \"" + _text + "\"");
		_text.clear();
	}

	std::string _text;
	int _depth = 0;
};


AutoPtr<Poco::XML::Document> buildFromFastInfoset(const std::string& document)
{
	FastInfosetParser parser;
	Poco::XML::DOMBuilder builder(parser);
	std::istringstream in(document);
	Ixor::XML::InputSource source(in);
	return builder.parse(&source);
}


std::string serialize(const Poco::XML::Document* pDocument)
	/// The document as Fast Infoset, through the host's DOMSerializer.
{
	std::ostringstream out;
	{
		FastInfosetWriter writer(out);
		Poco::XML::DOMSerializer serializer;
		serializer.setContentHandler(&writer);
		serializer.setDTDHandler(&writer);
		serializer.setProperty(Ixor::XML::XMLReader::PROPERTY_LEXICAL_HANDLER, static_cast<Ixor::XML::LexicalHandler*>(&writer));
		serializer.serialize(pDocument);
	}
	return out.str();
}


} // namespace


TEST(DOMTest, BuilderOnTheParserBuildsWhatTheHostsDOMParserBuilds)
{
	for (const std::string& path: dataFiles())
	{
		SCOPED_TRACE(path);
		Poco::XML::DOMParser domParser;
		AutoPtr<Poco::XML::Document> pExpected = domParser.parse(path);
		std::ifstream xml(path, std::ios::binary);
		std::ostringstream fi;
		Converter::convertToFIS(xml, fi, 0, 16);
		AutoPtr<Poco::XML::Document> pActual = buildFromFastInfoset(fi.str());

		const TreeLines expected(pExpected);
		EXPECT_EQ("", firstDifference(expected.lines, TreeLines(pActual).lines));
		EXPECT_GT(expected.lines.size(), 20u);
	}
}


TEST(DOMTest, SerializerIntoTheWriterWritesWhatBuildsTheSameTree)
{
	// The sample documents, and namespaces that the DOM holds without any
	// declaration: the writer declares what the names need.
	std::vector<std::string> documents;
	for (const std::string& path: dataFiles())
	{
		std::ifstream in(path, std::ios::binary);
		std::ostringstream xml;
		xml << in.rdbuf();
		documents.push_back(xml.str());
	}
	documents.push_back("<a xmlns='urn:x'><b/><c xmlns=''><d/></c><e xmlns='urn:y'/><f/></a>");
	documents.push_back("<p:a xmlns:p='urn:x' xmlns='urn:x'><b p:c='1' d='2'/><p:e/></p:a>");
	documents.push_back("<!DOCTYPE a PUBLIC '-//A//EN' 'a.dtd'><a><![CDATA[x < y]]><?pi data?><!--note--></a>");
	for (const std::string& xml: documents)
	{
		SCOPED_TRACE(xml.substr(0, 120));
		Poco::XML::DOMParser domParser;
		AutoPtr<Poco::XML::Document> pOriginal = domParser.parseString(xml);
		AutoPtr<Poco::XML::Document> pBack = buildFromFastInfoset(serialize(pOriginal));
		EXPECT_EQ("", firstDifference(TreeLines(pOriginal).lines, TreeLines(pBack).lines));
	}
}
