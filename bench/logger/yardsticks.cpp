// The loggers of other make: installed from the distribution, called, nothing else. Built without our
// warnings, as their headers aren't ours.

#include <glog/logging.h>
#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include "loggers.h"

namespace panelry::bench
{

namespace
{

std::shared_ptr<spdlog::logger> asynchronous;

}  // namespace

BenchedLogger SpdlogAsync()
{
    BenchedLogger logger;
    logger.name = "spdlog";
    logger.start = [](const std::string& directory, std::uint32_t /*lines*/) {
        spdlog::init_thread_pool(spdlog::details::default_async_q_size, 1);
        asynchronous = spdlog::basic_logger_mt<spdlog::async_factory>("bench", directory + "/spdlog.log");
        asynchronous->set_pattern("[%Y-%m-%d %H:%M:%S.%e][%t][%l][%s:%#] %v");
    };
    logger.write = [](std::uint32_t number) {
        asynchronous->log(spdlog::source_loc{__FILE__, __LINE__, ""}, spdlog::level::info,
                          "order {} of account 8802345671: buy 1200 of 600519 at 1688.00, sent to the market",
                          number);
    };
    logger.finish = [] {
        asynchronous.reset();
        spdlog::shutdown();  // joins its thread behind the last line
    };
    return logger;
}

BenchedLogger GlogSync()
{
    BenchedLogger logger;
    logger.name = "glog";
    logger.start = [](const std::string& directory, std::uint32_t /*lines*/) {
        FLAGS_log_dir = directory;
        FLAGS_stderrthreshold = google::FATAL;
        FLAGS_timestamp_in_logfile_name = false;
        google::InitGoogleLogging("bench");
    };
    logger.write = [](std::uint32_t number) {
        LOG(INFO) << "order " << number
                  << " of account 8802345671: buy 1200 of 600519 at 1688.00, sent to the market";
    };
    logger.finish = [] { google::ShutdownGoogleLogging(); };
    return logger;
}

}  // namespace panelry::bench
