// SPDX-License-Identifier: LicenseRef-HXAux
// A program that brings its own C library, so that nothing can be preloaded into it.
int main()
{
    return 0;
}
