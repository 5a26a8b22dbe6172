#pragma once

// What an event handler tells the toolkit: whether it dealt with the event.
class FReply
{
public:
	static FReply Handled() { return FReply(true); }
	static FReply Unhandled() { return FReply(false); }
	bool IsEventHandled() const { return bHandled; }

private:
	explicit FReply(bool bInHandled) : bHandled(bInHandled) {}
	bool bHandled;
};
