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

		std::string ToLowerHost(std::string Host)
		{
			if (Host.size() > 2 && Host.front() == '[' && Host.back() == ']')
			{
				Host = Host.substr(1, Host.size() - 2);
			}
			for (char& Byte : Host)
			{
				Byte = Byte >= 'A' && Byte <= 'Z' ? static_cast<char>(Byte - 'A' + 'a') : Byte;
			}
			return Host;
		}

		/** What is wrong with the form of an address, up to its scheme; empty when nothing is. */
		std::string FindFault(std::string_view Text)
		{
			if (Text.empty() || Text.size() > MaxAddressBytes || HasForbiddenByte(Text))
			{
				return Text.empty() ? "The address is missing" : "The address is none";
			}
			return Text.find("://") == std::string_view::npos ? "The address lacks http:// or https:// in front" : "";
		}

		/** What is wrong with its parts. Only a key's own place may hold a secret: a password in an address would be shown. */
		std::string FindFault(CURLU* Parsed, const FWebAddress& Address)
		{
			if (Address.Scheme != "http" && Address.Scheme != "https")
			{
				return "The address begins with neither http nor https";
			}
			if (!GetPart(Parsed, CURLUPART_USER).empty() || !GetPart(Parsed, CURLUPART_PASSWORD).empty())
			{
				return "The address holds a user or a password. Leave it out and give the key by an environment variable or a key file";
			}
			if (!GetPart(Parsed, CURLUPART_QUERY).empty() || !GetPart(Parsed, CURLUPART_FRAGMENT).empty())
			{
				return "The address has something after '?' or '#'";
			}
			return Address.Host.empty() || Address.Port <= 0 ? "The address names no host" : "";
		}
	}

	bool FWebAddress::Parse(std::string_view Text, FWebAddress& OutAddress, std::string& OutProblem)
	{
		const auto Refuse = [&OutProblem](std::string&& Fault)
		{
			OutProblem = std::move(Fault) + ": an address looks like http://127.0.0.1:8080/v1 or https://api.example.org/v1.";
			return false;
		};
		if (std::string Fault = FindFault(Text); !Fault.empty())
		{
			return Refuse(std::move(Fault));
		}
		const std::unique_ptr<CURLU, FAddressDeleter> Parsed(curl_url());
		const std::string Whole(Text);
		if (!Parsed || curl_url_set(Parsed.get(), CURLUPART_URL, Whole.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK)
		{
			return Refuse("The address cannot be understood");
		}
		FWebAddress Address;
		Address.Scheme = GetPart(Parsed.get(), CURLUPART_SCHEME);
		Address.Host = ToLowerHost(GetPart(Parsed.get(), CURLUPART_HOST));
		const std::string PortText = GetPart(Parsed.get(), CURLUPART_PORT);
		Address.Port = PortText.empty() ? DefaultPort(Address.Scheme) : std::atoi(PortText.c_str());
		Address.Path = GetPart(Parsed.get(), CURLUPART_PATH);
		while (Address.Path.ends_with('/'))
		{
			Address.Path.pop_back();
		}
		if (std::string Fault = FindFault(Parsed.get(), Address); !Fault.empty())
		{
			return Refuse(std::move(Fault));
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
