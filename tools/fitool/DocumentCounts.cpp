#include "DocumentCounts.h"
#include "Poco/NumberFormatter.h"
#include "Poco/SAX/Attributes.h"


using Poco::XML::XMLChar;
using Poco::XML::XMLString;


namespace Fitool {


namespace
{
	std::string counted(Poco::UInt64 count, const char* singular, const char* plural)
	{
		return Poco::NumberFormatter::format(count) + " " + (count == 1 ? singular : plural);
	}
}


DocumentCounts::DocumentCounts():
	_elements(0),
	_attributes(0),
	_textOctets(0),
	_comments(0),
	_processingInstructions(0)
{
}


DocumentCounts::~DocumentCounts()
{
}


std::string DocumentCounts::summary() const
{
	return counted(_elements, "element", "elements") + ", " + counted(_attributes, "attribute", "attributes") + ", "
		+ counted(_textOctets, "octet of text", "octets of text") + ", " + counted(_comments, "comment", "comments") + ", "
		+ counted(_processingInstructions, "processing instruction", "processing instructions");
}


void DocumentCounts::startElement(const XMLString&, const XMLString&, const XMLString&, const Poco::XML::Attributes& attributes)
{
	++_elements;
	_attributes += static_cast<Poco::UInt64>(attributes.getLength());
}


void DocumentCounts::characters(const XMLChar[], int, int length)
{
	_textOctets += static_cast<Poco::UInt64>(length);
}


void DocumentCounts::processingInstruction(const XMLString&, const XMLString&)
{
	++_processingInstructions;
}


void DocumentCounts::startDTD(const XMLString&, const XMLString&, const XMLString&)
{
}


void DocumentCounts::endDTD()
{
}


void DocumentCounts::startEntity(const XMLString&)
{
}


void DocumentCounts::endEntity(const XMLString&)
{
}


void DocumentCounts::startCDATA()
{
}


void DocumentCounts::endCDATA()
{
}


void DocumentCounts::comment(const XMLChar[], int, int)
{
	++_comments;
}


} // namespace Fitool
