#include "Ixor/FastInfoset/NullRefEncoding.h"
#include "Ixor/FastInfoset/Encoder.h"
#include "Ixor/FastInfoset/FISContentHandler.h"


namespace Ixor {
namespace FastInfoset {


NullRefEncoding::NullRefEncoding(const std::string& data):
	NullEncoding(Unreserved()),
	_data(&data)
{
}


NullRefEncoding::~NullRefEncoding()
{
}


void NullRefEncoding::reset(const std::string& data)
{
	_data = &data;
}


bool NullRefEncoding::merge(const Encoding&)
{
	throw Ixor::InvalidAccessException("NullRefEncoding is immutable");
}


void NullRefEncoding::write(BitStreamWriter& writer) const
{
	poco_assert(_data && !_data->empty());
	Encoder::nonEmptyOctetString(writer, *_data);
}


void NullRefEncoding::handle(Ixor::XML::ContentHandler* pHandler) const
{
	Encoding::handle(pHandler);
}


void NullRefEncoding::handle(FISContentHandler* pHandler) const
{
	NullEncoding::handle(pHandler);
}


std::string& NullRefEncoding::content()
{
	throw Ixor::InvalidAccessException("NullRefEncoding is immutable");
}


} } // namespace Ixor::FastInfoset
