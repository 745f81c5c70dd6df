#include "Reading.h"
#include "Poco/Bugcheck.h"
#include "Poco/SAX/InputSource.h"
#include <sstream>


namespace TestSupport {


const Reading READINGS[4] = {Reading::MEMORY, Reading::WHOLE_STREAM, Reading::ONE_OCTET, Reading::TWO_TO_FIVE_OCTETS};


std::ostream& operator << (std::ostream& out, Reading reading)
{
	switch (reading)
	{
	case Reading::MEMORY:             return out << "Memory";
	case Reading::WHOLE_STREAM:       return out << "WholeStream";
	case Reading::ONE_OCTET:          return out << "OneOctet";
	case Reading::TWO_TO_FIVE_OCTETS: return out << "TwoToFiveOctets";
	}
	return out << "Reading" << static_cast<int>(reading);
}


Input::Input(const std::string& octets, Reading reading):
	_octets(octets)
{
	switch (reading)
	{
	case Reading::MEMORY:
		break;
	case Reading::WHOLE_STREAM:
		_pBuffer.reset(new std::stringbuf(_octets, std::ios::in));
		break;
	case Reading::ONE_OCTET:
		_pBuffer.reset(new TrickleBuffer(_octets.data(), _octets.size(), {1}));
		break;
	case Reading::TWO_TO_FIVE_OCTETS:
		_pBuffer.reset(new TrickleBuffer(_octets.data(), _octets.size(), {2, 3, 4, 5}));
		break;
	}
	if (_pBuffer) _pStream.reset(new std::istream(_pBuffer.get()));
}


Input::Input(const std::string& octets, std::vector<std::size_t> chunkSizes):
	_octets(octets),
	_pBuffer(new TrickleBuffer(_octets.data(), _octets.size(), std::move(chunkSizes))),
	_pStream(new std::istream(_pBuffer.get()))
{
}


Input::~Input()
{
}


Ixor::FastInfoset::BitStreamReader& Input::reader()
{
	if (!_pReader)
	{
		if (_pStream) _pReader.reset(new Ixor::FastInfoset::BitStreamReader(*_pStream));
		else _pReader.reset(new Ixor::FastInfoset::BitStreamReader(_octets.data(), _octets.size()));
	}
	return *_pReader;
}


std::istream& Input::stream()
{
	poco_assert(_pStream);
	return *_pStream;
}


void Input::parse(Ixor::FastInfoset::FastInfosetParser& parser)
{
	if (_pStream)
	{
		Ixor::XML::InputSource source(*_pStream);
		parser.parse(&source);
		return;
	}
	const std::size_t offset = _offset < _octets.size() ? _offset : _octets.size();
	parser.parseMemoryNP(_octets.data() + offset, _octets.size() - offset);
	_offset = offset + static_cast<std::size_t>(parser.lastDocumentSize());
}


} // namespace TestSupport
