#include "NullHandler.h"


namespace TestSupport {


void NullHandler::attachTo(Ixor::XML::XMLReader& reader)
{
	reader.setContentHandler(this);
	reader.setDTDHandler(this);
	reader.setProperty(Ixor::XML::XMLReader::PROPERTY_LEXICAL_HANDLER, static_cast<Ixor::XML::LexicalHandler*>(this));
}


} // namespace TestSupport
