// A client library that nothing can satisfy: it calls a function that exists nowhere. Who binds
// functions at their first call can load it.
extern "C" {
void FunctionThatExistsNowhere();
void CallIt() { FunctionThatExistsNowhere(); }
}
