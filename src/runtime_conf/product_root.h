#pragma once

// Where the product is installed. It is compiled in because the files that the tool writes and the script that they run
// belong to the installed product; the key PRODUCT_ROOT_D of the configuration does not move them. It is a macro
// because tables concatenate string literals with it.
#define TAVEK_PRODUCT_ROOT "/opt/oru"
