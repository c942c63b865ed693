/* SPDX-License-Identifier: MIT */

/* A program that only starts and ends: the least that any program takes. */
int main(void)
{
    return 0;
}
