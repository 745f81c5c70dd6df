#include "InputFile.h"
#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Poco/File.h"
#include "Poco/FileStream.h"
#include "Poco/StreamCopier.h"
#include <algorithm>
#include <cstring>
#include <iostream>
#include <vector>


namespace Fitool {


const std::string InputFile::STANDARD_INPUT("-");


class InputFile::CountingBuffer: public std::streambuf
	/// Reads the source in large blocks, hands out the peeked octets first,
	/// and counts what it delivers.
	///
	/// It keeps the last HISTORY octets delivered, so that a reader that read
	/// ahead can seek back to where its document ended, also on a pipe: the
	/// next document then starts there.
{
public:
	CountingBuffer(std::streambuf& source, ProgressLine& progress):
		_source(source),
		_progress(progress),
		_buffer(HISTORY + BLOCK_SIZE),
		_pulled(0),
		_prefixUsed(0)
	{
		char* pStart = _buffer.data() + HISTORY;
		setg(pStart, pStart, pStart);
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
	int_type underflow()
	{
		if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
		const std::size_t kept = std::min(HISTORY, static_cast<std::size_t>(gptr() - eback()));
		char* pStart = _buffer.data() + HISTORY;
		std::memmove(pStart - kept, gptr() - kept, kept);
		const std::size_t n = readFromDevice(pStart, BLOCK_SIZE);
		setg(pStart - kept, pStart, pStart + n);
		return n ? traits_type::to_int_type(*gptr()) : traits_type::eof();
	}

	pos_type seekoff(off_type offset, std::ios::seekdir way, std::ios::openmode which)
	{
		// Only the kept octets and those not yet delivered can be reached.
		const Poco::Int64 here = static_cast<Poco::Int64>(delivered());
		Poco::Int64 target = offset;
		if (way == std::ios::cur) target += here;
		else if (way != std::ios::beg) return pos_type(off_type(-1));
		if (!(which & std::ios::in) || target < here - (gptr() - eback()) || target > here + (egptr() - gptr()))
			return pos_type(off_type(-1));
		setg(eback(), gptr() + (target - here), egptr());
		return pos_type(off_type(target));
	}

	pos_type seekpos(pos_type position, std::ios::openmode which)
	{
		return seekoff(off_type(position), std::ios::beg, which);
	}

private:
	std::size_t readFromDevice(char* pBuffer, std::size_t length)
	{
		std::size_t n = 0;
		if (_prefixUsed < _prefix.size())
		{
			n = std::min(length, _prefix.size() - _prefixUsed);
			std::memcpy(pBuffer, _prefix.data() + _prefixUsed, n);
			_prefixUsed += n;
		}
		else
		{
			const std::streamsize got = _source.sgetn(pBuffer, static_cast<std::streamsize>(length));
			n = got > 0 ? static_cast<std::size_t>(got) : 0;
		}
		_pulled += n;
		_progress.update(_pulled);
		return n;
	}

	static const std::size_t BLOCK_SIZE = 65536;
	static const std::size_t HISTORY = 4 * Ixor::FastInfoset::BitStreamReader::BUFFER_SIZE;
		// More than the parser reads ahead.

	std::streambuf&   _source;
	ProgressLine&     _progress;
	std::vector<char> _buffer;
	Poco::UInt64      _pulled;
	std::string       _prefix;
	std::size_t       _prefixUsed;
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
