// Converts a small XML document to Fast Infoset and back with the installed
// library, and checks that the text survived.

#include "Ixor/FastInfoset/Converter.h"
#include <iostream>
#include <sstream>


int main()
{
	const std::string xml = "<greeting lang=\"en\">hello, <b>installed</b> library</greeting>";
	std::istringstream xmlIn(xml);
	std::stringstream fi;
	std::ostringstream back;
	try
	{
		Ixor::FastInfoset::Converter::convertToFIS(xmlIn, fi, 0, 16);
		Ixor::FastInfoset::Converter::convertToXML(fi, back, 0);
	}
	catch (const Ixor::Exception& exc)
	{
		std::cerr << exc.displayText() << "\n";
		return 1;
	}
	std::cout << xml.size() << " octets of XML, " << fi.str().size() << " octets of Fast Infoset, back: " << back.str() << "\n";
	return back.str() == xml ? 0 : 1;
}
