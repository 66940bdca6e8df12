"""A PLC of 50 items: chooses job 7, sends a lot, triggers and reads answers. Exits with 1 when one
is wrong.

usage: pymodbus_client.py PORT
"""

import sys
import time

from pymodbus.client import ModbusTcpClient

TRIGGER, JOB = 1, 2
ITEMS = 50


def check(condition, message):
    if not condition:
        sys.exit(message)


def answer_to(client, number):
    deadline = time.monotonic() + 5
    while time.monotonic() < deadline:
        registers = client.read_input_registers(0, 45, slave=1).registers
        if registers[1] == number:
            return registers
    sys.exit(f"command {number} was not answered")


def text_of(registers):
    data = b"".join(value.to_bytes(2, "big") for value in registers[9:41])
    return data[: registers[8]].decode("ascii")


def main():
    client = ModbusTcpClient("127.0.0.1", port=int(sys.argv[1]), timeout=5)
    check(client.connect(), "no connection")
    client.write_registers(0, [JOB, 1, 7], slave=1)
    check(answer_to(client, 1)[2] == 1, "job 7 was refused")
    client.write_registers(0, [JOB, 2, 8], slave=1)
    refused = answer_to(client, 2)
    check(refused[2] == 2 and refused[7] == 40, "job 8 was not refused")

    lot = b"-L42"
    client.write_registers(
        10, [int.from_bytes(lot[i : i + 2], "big") for i in range(0, len(lot), 2)], slave=1
    )
    for item in range(ITEMS):
        client.write_registers(0, [TRIGGER, 100 + item], slave=1)
        registers = answer_to(client, 100 + item)
        check(registers[2] == 1, f"item {item} is not OK: {registers}")
        check(registers[3] == item + 1, f"item {item} has number {registers[3]}")
        check(text_of(registers) == f"{item}-L42", f"item {item} reads {text_of(registers)!r}")
    registers = client.read_input_registers(0, 45, slave=1).registers
    check(registers[0] == 1, "not ready")
    check(registers[6] == 7, "another job")
    check(registers[41] == ITEMS and registers[43] == 0, f"counts: {registers[41:45]}")
    client.close()


main()
