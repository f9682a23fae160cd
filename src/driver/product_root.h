#pragma once

// Where the product is installed. Compiled in: the files the tool writes belong to the installed product. A macro,
// because tables join string literals to it.
#define TAVEK_PRODUCT_ROOT "/opt/oru"
