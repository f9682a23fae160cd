#pragma once

// Where the product is installed. It is compiled in because the files that the tool writes belong to the installed
// product. It is a macro because tables concatenate string literals with it.
#define TAVEK_PRODUCT_ROOT "/opt/oru"
