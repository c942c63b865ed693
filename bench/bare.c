/* SPDX-License-Identifier: MIT */

/* What it costs to start and end a program at all. */
int main(void)
{
    return 0;
}
