// kestdmx docs: the extension descriptor and the documented Lua functions, as the module registers
// them with the host.
// CLI11 first: the engine's check() macro would rewrite its Option::check.
#include <CLI/CLI.hpp>

#include "KestDMXCommands.h"
#include "KestDMXRunner.h"
#include "KestDMXText.h"

#include <iostream>

#include "VorlithHostRecorder.h"

namespace
{
	void PrintDescriptor(const FVorlithExtensionDescriptor& Descriptor)
	{
		std::cout << "# " << ToUTF8(Descriptor.DisplayName) << "\n\n";
		std::cout << ToUTF8(Descriptor.Description) << "\n\n";
		std::cout << "| Field | Value |\n|---|---|\n";
		std::cout << "| Id | " << ToUTF8(Descriptor.Id) << " |\n";
		std::cout << "| Module | " << ToUTF8(Descriptor.ModuleName) << " |\n";
		std::cout << "| Author | " << ToUTF8(Descriptor.Author) << " |\n";
		std::cout << "| Version | " << ToUTF8(Descriptor.Version) << " |\n";
		std::cout << "| Keyword | " << ToUTF8(Descriptor.Keyword) << " |\n";
		std::cout << "| Experimental | " << (Descriptor.bExperimental ? "yes" : "no") << " |\n";
		std::cout << "| Requires editor restart | " << (Descriptor.bRequiresEditorRestart ? "yes" : "no") << " |\n";
		std::cout << "| Provides Lua bindings | " << (Descriptor.bProvidesLuaBindings ? "yes" : "no") << " |\n";
		std::string Tags;
		for (const FString& Tag : Descriptor.Tags)
		{
			Tags += (Tags.empty() ? "" : ", ") + ToUTF8(Tag);
		}
		std::cout << "| Tags | " << Tags << " |\n\n";
	}

	int PrintDocs()
	{
		FKestDMXSession Session;
		const FVorlithHostRecorder& Host = FVorlithHostRecorder::Get();
		for (const FVorlithExtensionDescriptor& Descriptor : Host.Extensions)
		{
			PrintDescriptor(Descriptor);
		}
		for (const FVorlithRegisteredBinding& Binding : Host.Bindings)
		{
			std::cout << "## Lua functions (category " << ToUTF8(Binding.Category) << ", owner " << ToUTF8(Binding.OwnerId) << ")\n\n";
			// One entry per function rather than a table: signatures hold '|', which would split a
			// Markdown table cell, and the records are printed exactly as registered.
			for (const FLuaFunctionDoc& Doc : Binding.Docs)
			{
				std::cout << "- `" << ToUTF8(Doc.Signature) << "`: " << ToUTF8(Doc.Description) << ". Returns " << ToUTF8(Doc.Returns) << ".\n";
			}
			std::cout << "\n";
		}
		return KestDMXExitSuccess;
	}
}

void AddDocsCommand(CLI::App& App, int& OutExitCode)
{
	CLI::App* Command = App.add_subcommand("docs", "Print the extension descriptor and the documented Lua functions.");
	Command->callback([&OutExitCode]() { OutExitCode = PrintDocs(); });
}
