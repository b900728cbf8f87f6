@ SPDX-License-Identifier: LicenseRef-HXAux
@
@ The reset program: loaded into the RAM of a target whose bootloader is connected, and started there, it requests
@ a system reset of the microcontroller, which starts the firmware in its flash. It prepares its memory as any program
@ does: initialised data copied, zero data cleared.

    .syntax unified
    .cpu    cortex-m3
    .thumb

    .equ    AIRCR, 0xE000ED0C           @ Application Interrupt and Reset Control Register
    .equ    PRIORITY_GROUPING, 0x700    @ the field of it that a reset request must leave as it is
    .equ    VECTORS, 76                 @ 16 of the processor, 60 of the peripherals

@ ---- vector table: the bootloader takes the stack pointer and the entry from its first two words

    .section .vectors, "a", %progbits
    .word   stack_top
    .word   entry
    .rept   VECTORS - 2
    .word   wait
    .endr

@ ---- program

    .section .text, "ax", %progbits

    .type   entry, %function
    .global entry
entry:
    ldr     r0, =data_start
    ldr     r1, =data_end
    ldr     r2, =data_image
copy:
    cmp     r0, r1
    bhs     copied
    ldr     r3, [r2], #4
    str     r3, [r0], #4
    b       copy
copied:
    ldr     r0, =zero_start
    ldr     r1, =zero_end
    movs    r3, #0
clear:
    cmp     r0, r1
    bhs     cleared
    str     r3, [r0], #4
    b       clear
cleared:
    bl      request_reset

    .type   wait, %function
wait:                                   @ also where every unexpected exception ends
    b       wait

    .type   request_reset, %function
request_reset:
    ldr     r0, =requests
    ldr     r1, [r0]
    adds    r1, #1
    str     r1, [r0]
    ldr     r0, =reset_key
    ldr     r1, [r0]
    ldr     r2, =AIRCR
    ldr     r3, [r2]
    and     r3, r3, #PRIORITY_GROUPING
    orrs    r3, r1
    dsb
    str     r3, [r2]
    dsb
endless:
    b       endless
    .ltorg

@ ---- initialised data: the register's write key together with the bit that requests the reset

    .section .data, "aw", %progbits
    .balign 4
    .global reset_key
reset_key:
    .word   0x05FA0004

@ ---- zero data: how often the reset was requested, and one word that stays zero

    .section .bss, "aw", %nobits
    .balign 4
    .global requests
requests:
    .space  4
untouched:
    .space  4
