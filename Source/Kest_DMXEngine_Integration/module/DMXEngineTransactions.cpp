#include "module/DMXEngineTransactions.h"

#define LOCTEXT_NAMESPACE "Kest_DMXEngine"

FText GetDMXEngineTransactionTitle(EDMXEngineTransaction Transaction)
{
	switch (Transaction)
	{
	case EDMXEngineTransaction::AddDMXEntity:
		return LOCTEXT("AddDMXEntity", "Vorlith: Add DMX Library Entity");
	case EDMXEngineTransaction::ConfigureDMXEntity:
		return LOCTEXT("ConfigureDMXEntity", "Vorlith: Configure DMX Library Entity");
	case EDMXEngineTransaction::RemoveDMXEntity:
		return LOCTEXT("RemoveDMXEntity", "Vorlith: Remove DMX Library Entity");
	case EDMXEngineTransaction::AddDMXComponent:
		return LOCTEXT("AddDMXComponent", "Vorlith: Add DMX Component");
	case EDMXEngineTransaction::ConfigureDMXComponent:
		return LOCTEXT("ConfigureDMXComponent", "Vorlith: Configure DMX Component");
	}
	return FText::GetEmpty();
}

#undef LOCTEXT_NAMESPACE
