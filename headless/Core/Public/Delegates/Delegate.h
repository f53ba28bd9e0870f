// Single-cast delegates. Only static binding is modelled: the module binds free functions.
#pragma once

#include <functional>
#include <vector>
#include "CoreTypes.h"

template <typename FuncType>
class TDelegate;

template <typename RetType, typename... ParamTypes>
class TDelegate<RetType(ParamTypes...)>
{
public:
	typedef RetType (*FStaticFunction)(ParamTypes...);

	TDelegate() = default;

	static TDelegate CreateStatic(FStaticFunction Function)
	{
		TDelegate Result;
		Result.Bound = Function;
		Result.StaticFunction = Function;
		return Result;
	}
	template <typename LambdaType>
	static TDelegate CreateLambda(LambdaType&& Lambda)
	{
		TDelegate Result;
		Result.Bound = std::forward<LambdaType>(Lambda);
		return Result;
	}

	bool IsBound() const { return static_cast<bool>(Bound); }
	void Unbind()
	{
		Bound = nullptr;
		StaticFunction = nullptr;
	}
	RetType Execute(ParamTypes... Params) const
	{
		check(IsBound());
		return Bound(std::forward<ParamTypes>(Params)...);
	}
	bool ExecuteIfBound(ParamTypes... Params) const
	{
		if (!IsBound())
		{
			return false;
		}
		Bound(std::forward<ParamTypes>(Params)...);
		return true;
	}
	// The free function this delegate was bound to with CreateStatic, for inspection by tools.
	FStaticFunction GetStaticFunction() const { return StaticFunction; }

private:
	std::function<RetType(ParamTypes...)> Bound;
	FStaticFunction StaticFunction = nullptr;
};

// Multicast delegate with native (lambda) bindings.
template <typename... ParamTypes>
class TMulticastDelegate
{
public:
	template <typename LambdaType>
	void AddLambda(LambdaType&& Lambda) { Bindings.emplace_back(std::forward<LambdaType>(Lambda)); }
	bool IsBound() const { return !Bindings.empty(); }
	void Clear() { Bindings.clear(); }
	void Broadcast(ParamTypes... Params) const
	{
		for (const auto& Binding : Bindings)
		{
			Binding(Params...);
		}
	}

private:
	std::vector<std::function<void(ParamTypes...)>> Bindings;
};
