// Converts an XML file to Fast Infoset and back, and reports the sizes.
//
//   convert input.xml [output.fi]

#include "Ixor/FastInfoset/Converter.h"
#include <fstream>
#include <iostream>
#include <sstream>


int main(int argc, char** argv)
{
	if (argc < 2)
	{
		std::cerr << "usage: convert input.xml [output.fi]\n";
		return 2;
	}
	try
	{
		std::ifstream xmlIn(argv[1], std::ios::binary);
		if (!xmlIn) throw Ixor::FileNotFoundException(argv[1]);
		std::ostringstream xml;
		xml << xmlIn.rdbuf();

		std::istringstream xmlText(xml.str());
		std::ostringstream fi;
		Ixor::FastInfoset::Converter::convertToFIS(xmlText, fi, 0, 16);
		if (argc > 2) std::ofstream(argv[2], std::ios::binary) << fi.str();

		std::istringstream fiIn(fi.str());
		std::ostringstream back;
		Ixor::FastInfoset::Converter::convertToXML(fiIn, back, 0);

		std::cout << argv[1] << ": " << xml.str().size() << " octets of XML, "
			<< fi.str().size() << " octets of Fast Infoset ("
			<< (100 * fi.str().size() / (xml.str().size() ? xml.str().size() : 1)) << "%), "
			<< back.str().size() << " octets of XML written back\n";
		return 0;
	}
	catch (const Ixor::Exception& exc)
	{
		std::cerr << argv[1] << ": " << exc.displayText() << "\n";
		return 1;
	}
}
