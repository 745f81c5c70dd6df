//
// InputFile.h
//
// Tool: fitool
// Module: InputFile
//


#ifndef Fitool_InputFile_INCLUDED
#define Fitool_InputFile_INCLUDED


#include "ProgressLine.h"
#include "Poco/Types.h"
#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>


namespace Fitool {


class InputFile
	/// The input of a command: a file, or standard input for "-".
	///
	/// Its stream counts the octets it hands out, so that an error can say
	/// how far the reader got, and draws the progress line for large inputs.
	/// The first octets can be looked at before reading starts.
{
public:
	static const std::string STANDARD_INPUT;
		/// "-".

	explicit InputFile(const std::string& path);
		/// Throws Ixor::FileNotFoundException when path names nothing,
		/// Poco::OpenFileException for a folder, and the host's file
		/// exceptions when the file cannot be opened.

	~InputFile();

	const std::string& name() const;
		/// The path, or "(standard input)".

	Poco::UInt64 size() const;
		/// The size in octets, or 0 when it is not known (a pipe).

	std::string peek(std::size_t count);
		/// Up to count first octets of the input (fewer when it is shorter).
		/// The stream still delivers them. Call before reading the stream.

	std::istream& stream();
		/// The input, counted.

	Poco::UInt64 octetsRead() const;
		/// The octets that the stream has delivered so far.

	std::string readAll();
		/// The rest of the input.

	void showProgress(const std::string& label);
		/// Shows a progress line while the stream is read (see ProgressLine).

private:
	InputFile(const InputFile&);
	InputFile& operator = (const InputFile&);

	class CountingBuffer;

	std::string                     _name;
	Poco::UInt64                    _size;
	std::unique_ptr<std::istream>   _pFile;
	ProgressLine                    _progress;
	std::unique_ptr<CountingBuffer> _pBuffer;
	std::unique_ptr<std::istream>   _pStream;
};


} // namespace Fitool


#endif // Fitool_InputFile_INCLUDED
