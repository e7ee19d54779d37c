// The parts of Boost that are compiled, once and with everything else: nothing of it is loaded at run time.
#include <boost/asio/impl/src.hpp>
#include <boost/asio/ssl/impl/src.hpp>
#include <boost/beast/src.hpp>
#include <boost/json/src.hpp>
