// Writes the header of a Fast Infoset document and reads it back.

#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/BitStreamWriter.h"
#include "Ixor/FastInfoset/Decoder.h"
#include "Ixor/FastInfoset/Encoder.h"
#include <iomanip>
#include <iostream>
#include <sstream>


int main()
{
	using namespace Ixor::FastInfoset;

	std::ostringstream out;
	{
		BitStreamWriter writer(out, false);
		Encoder::documentPreHeader(writer, true);
		writer.write(0u, 7);   // no optional components
		writer.complete();
	}
	const std::string document = out.str();
	std::cout << "header octets:";
	for (unsigned char c: document) std::cout << ' ' << std::hex << std::setw(2) << std::setfill('0') << int(c);
	std::cout << std::dec << '\n';

	BitStreamReader reader(document.data(), document.size());
	std::string declaration;
	Decoder::documentPreHeader(reader, declaration);
	std::cout << "XML declaration: " << declaration << "\nversion 1 header read back at bit " << reader.bitPos() << '\n';
	return 0;
}
