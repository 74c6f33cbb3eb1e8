// A connection of SQLite that has models: a virtual table for each of their entity types, and the
// mapping functions. Nothing is copied; rows are the instances that are there when a query reads
// them. What fails throws std::runtime_error with what is wrong.
//
// A connection and its models are for one thread at a time, as SQLite's own handles are when they
// are not shared, and no model may be written while a query over it runs.

#ifndef SQL_CONNECTION_H
#define SQL_CONNECTION_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Models.h"
#include "Module.h"
#include "Sqlite.h"

namespace sql {

// What the tables and functions of a connection share.
struct Connection {
    Connection(sqlite3* ofDatabase, const calls::Module& itsModule)
        : database(ofDatabase), module(itsModule) {}

    sqlite3* const database;
    const calls::Module& module;
    Models models;
};

// Makes the functions of the export table known to a connection, and how tables over models are
// read. The connection keeps what is given as long as it is open.
std::shared_ptr<Connection> Connect(sqlite3* database, const calls::Module& module);

// Attaches a database in memory under the name, with a table for each entity type of the model's
// schema and for each that the model holds beside. Instances of the first model that is added go
// by their number alone. A name that is taken, and "main" and "temp", are refused, and so is a
// model beyond what SQLite attaches (10).
void AddModel(Connection& connection, const std::string& name,
              std::shared_ptr<const kor::Model> model);

// Lets go of the models whose databases have been detached.
void RemoveDetached(Connection& connection);

// The names of the tables of a model, and those of the columns of one of them (none for a name
// that is no table), in their order.
std::vector<std::string> TableNames(const kor::Model& model);
std::vector<std::string> ColumnNames(const kor::Model& model, std::string_view table);

// A name as SQL writes it: between double quotes, those in it doubled.
std::string Quoted(std::string_view name);

}  // namespace sql

#endif
