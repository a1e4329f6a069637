// Objects for the debugger, which reads them from the program without running it.

#include "prm/Context.h"

using namespace Prm;

extern const Time between, never;
extern const Frame frame;
extern const View right, noView;
extern const Context moment, nowhere;
extern const Context::Explicit exact;

const Time between = Time::fromDouble(-0.1);
const Time never = Time::INVALID;
const Frame frame = Frame::fromUInt(25);
const View right(1);
const View noView(0xFFFFFFFFu);
const Context moment(Time::fromInt(48), right, AnimationFlags(5));
const Context nowhere(Context::INVALID_TIME);
const Context::Explicit exact(between, right);

int main() {}
