#include "InputFile.h"
#include "Ixor/FastInfoset/FastInfoset.h"
#include "Poco/BufferedStreamBuf.h"
#include "Poco/File.h"
#include "Poco/FileStream.h"
#include "Poco/StreamCopier.h"
#include <algorithm>
#include <cstring>
#include <iostream>


namespace Fitool {


const std::string InputFile::STANDARD_INPUT("-");


class InputFile::CountingBuffer: public Poco::BufferedStreamBuf
	/// Reads the source in large blocks, hands out the peeked octets first,
	/// and counts what it delivers.
{
public:
	CountingBuffer(std::streambuf& source, ProgressLine& progress):
		Poco::BufferedStreamBuf(BLOCK_SIZE, std::ios::in),
		_source(source),
		_progress(progress),
		_pulled(0),
		_prefixUsed(0)
	{
	}

	std::string peek(std::size_t count)
	{
		char block[4096];
		while (_prefix.size() < count)
		{
			const std::streamsize n = _source.sgetn(block, static_cast<std::streamsize>(std::min(sizeof(block), count - _prefix.size())));
			if (n <= 0) break;
			_prefix.append(block, static_cast<std::size_t>(n));
		}
		return _prefix.substr(0, count);
	}

	Poco::UInt64 delivered() const
	{
		return _pulled - static_cast<Poco::UInt64>(egptr() - gptr());
	}

protected:
	int readFromDevice(char* pBuffer, std::streamsize length)
	{
		std::streamsize n = 0;
		if (_prefixUsed < _prefix.size())
		{
			n = std::min(length, static_cast<std::streamsize>(_prefix.size() - _prefixUsed));
			std::memcpy(pBuffer, _prefix.data() + _prefixUsed, static_cast<std::size_t>(n));
			_prefixUsed += static_cast<std::size_t>(n);
		}
		else
		{
			n = _source.sgetn(pBuffer, length);
			if (n < 0) n = 0;
		}
		_pulled += static_cast<Poco::UInt64>(n);
		_progress.update(_pulled);
		return static_cast<int>(n);
	}

private:
	static const std::streamsize BLOCK_SIZE = 65536;

	std::streambuf& _source;
	ProgressLine&   _progress;
	Poco::UInt64    _pulled;
	std::string     _prefix;
	std::size_t     _prefixUsed;
};


InputFile::InputFile(const std::string& path):
	_size(0)
{
	std::streambuf* pSource = 0;
	if (path == STANDARD_INPUT)
	{
		_name = "(standard input)";
		// A regular file behind standard input has a size; a pipe has none.
		Poco::File stdinFile("/dev/stdin");
		try
		{
			if (stdinFile.exists() && stdinFile.isFile()) _size = stdinFile.getSize();
		}
		catch (const Ixor::Exception&)
		{
		}
		pSource = std::cin.rdbuf();
	}
	else
	{
		_name = path;
		Poco::File file(path);
		if (!file.exists()) throw Ixor::FileNotFoundException();
		if (file.isDirectory()) throw Poco::OpenFileException("is a folder");
		_size = file.getSize();
		_pFile.reset(new Poco::FileInputStream(path, std::ios::in | std::ios::binary));
		pSource = _pFile->rdbuf();
	}
	_pBuffer.reset(new CountingBuffer(*pSource, _progress));
	_pStream.reset(new std::istream(_pBuffer.get()));
}


InputFile::~InputFile()
{
}


const std::string& InputFile::name() const
{
	return _name;
}


Poco::UInt64 InputFile::size() const
{
	return _size;
}


std::string InputFile::peek(std::size_t count)
{
	return _pBuffer->peek(count);
}


std::istream& InputFile::stream()
{
	return *_pStream;
}


Poco::UInt64 InputFile::octetsRead() const
{
	return _pBuffer->delivered();
}


std::string InputFile::readAll()
{
	std::string content;
	if (_size > 0) content.reserve(static_cast<std::size_t>(_size));
	Poco::StreamCopier::copyToString(*_pStream, content);
	return content;
}


void InputFile::showProgress(const std::string& label)
{
	_progress.start(label, _size);
}


} // namespace Fitool
