#include "Http/WebAddress.h"

#include <memory>

#include <curl/curl.h>

namespace Velmora
{
	namespace
	{
		constexpr size_t MaxAddressBytes = 2048;

		struct FAddressDeleter
		{
			void operator()(CURLU* Address) const { curl_url_cleanup(Address); }
		};

		std::string GetPart(CURLU* Address, CURLUPart Part, unsigned Flags = 0)
		{
			char* Text = nullptr;
			if (curl_url_get(Address, Part, &Text, Flags) != CURLUE_OK)
			{
				return std::string();
			}
			std::string Result = Text;
			curl_free(Text);
			return Result;
		}

		int DefaultPort(std::string_view Scheme)
		{
			return Scheme == "https" ? 443 : 80;
		}

		bool HasForbiddenByte(std::string_view Text)
		{
			for (const char Byte : Text)
			{
				if (static_cast<unsigned char>(Byte) <= 0x20 || Byte == 0x7F)
				{
					return true;
				}
			}
			return false;
		}
	}

	bool FWebAddress::Parse(std::string_view Text, FWebAddress& OutAddress, std::string& OutProblem)
	{
		constexpr const char* Form = "an address looks like http://127.0.0.1:8080/v1 or https://api.example.org/v1.";
		if (Text.empty() || Text.size() > MaxAddressBytes || HasForbiddenByte(Text))
		{
			OutProblem = std::string(Text.empty() ? "The address is missing: " : "The address is none: ") + Form;
			return false;
		}
		if (Text.find("://") == std::string_view::npos)
		{
			OutProblem = std::string("The address lacks http:// or https:// in front: ") + Form;
			return false;
		}
		const std::unique_ptr<CURLU, FAddressDeleter> Parsed(curl_url());
		const std::string Whole(Text);
		if (!Parsed || curl_url_set(Parsed.get(), CURLUPART_URL, Whole.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK)
		{
			OutProblem = std::string("The address cannot be understood: ") + Form;
			return false;
		}
		FWebAddress Address;
		Address.Scheme = GetPart(Parsed.get(), CURLUPART_SCHEME);
		if (Address.Scheme != "http" && Address.Scheme != "https")
		{
			OutProblem = std::string("The address begins with neither http nor https: ") + Form;
			return false;
		}
		if (!GetPart(Parsed.get(), CURLUPART_USER).empty() || !GetPart(Parsed.get(), CURLUPART_PASSWORD).empty())
		{
			OutProblem = "The address holds a user or a password. Leave it out and give the key by an environment variable or a key file.";
			return false;
		}
		if (!GetPart(Parsed.get(), CURLUPART_QUERY).empty() || !GetPart(Parsed.get(), CURLUPART_FRAGMENT).empty())
		{
			OutProblem = std::string("The address has something after '?' or '#': ") + Form;
			return false;
		}
		Address.Host = GetPart(Parsed.get(), CURLUPART_HOST);
		if (Address.Host.size() > 2 && Address.Host.front() == '[' && Address.Host.back() == ']')
		{
			Address.Host = Address.Host.substr(1, Address.Host.size() - 2);
		}
		for (char& Byte : Address.Host)
		{
			Byte = Byte >= 'A' && Byte <= 'Z' ? static_cast<char>(Byte - 'A' + 'a') : Byte;
		}
		const std::string PortText = GetPart(Parsed.get(), CURLUPART_PORT);
		Address.Port = PortText.empty() ? DefaultPort(Address.Scheme) : std::atoi(PortText.c_str());
		Address.Path = GetPart(Parsed.get(), CURLUPART_PATH);
		while (Address.Path.ends_with('/'))
		{
			Address.Path.pop_back();
		}
		if (Address.Host.empty() || Address.Port <= 0)
		{
			OutProblem = std::string("The address names no host: ") + Form;
			return false;
		}
		OutAddress = std::move(Address);
		return true;
	}

	std::string FWebAddress::GetOrigin() const
	{
		const bool bHasBrackets = Host.find(':') != std::string::npos;
		std::string Result = Scheme + "://" + (bHasBrackets ? '[' + Host + ']' : Host);
		if (Port != DefaultPort(Scheme))
		{
			Result += ':' + std::to_string(Port);
		}
		return Result;
	}

	bool FWebAddress::IsLoopback() const
	{
		if (Host == "localhost" || Host == "::1")
		{
			return true;
		}
		// A name may begin with "127." too; only four numbers are an address.
		int Dots = 0;
		for (const char Byte : Host)
		{
			Dots += Byte == '.';
			if (Byte != '.' && (Byte < '0' || Byte > '9'))
			{
				return false;
			}
		}
		return Dots == 3 && Host.starts_with("127.");
	}
}
