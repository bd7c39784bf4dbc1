#pragma once

// To be called before the application is made. Texts, file names and keys are UTF-8 to the toolkit
// and to this program; under a locale of another encoding some typed letters would be lost, so the
// process takes the plain UTF-8 locale then.
void useUtf8();
