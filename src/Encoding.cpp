#include "Ixor/FastInfoset/Encoding.h"
#include "Poco/SAX/ContentHandler.h"


namespace Ixor {
namespace FastInfoset {


Encoding::Encoding()
{
}


Encoding::Encoding(const std::string& content):
	_content(content)
{
}


Encoding::Encoding(const char* pContent, std::size_t length):
	_content(pContent, length)
{
}


Encoding::~Encoding()
{
}


void Encoding::handle(Ixor::XML::ContentHandler* pHandler) const
{
	if (pHandler)
	{
		const std::string& text = content();
		pHandler->characters(text.data(), 0, static_cast<int>(text.size()));
	}
}


const std::string& Encoding::content() const
{
	return _content;
}


std::string& Encoding::content()
{
	return _content;
}


} } // namespace Ixor::FastInfoset
